// Conversions between automation values, and names of enumerators.
#include "automation/value.h"

#include <gtest/gtest.h>

#include "automation/enumeration_table.h"
#include "host/automation_error.h"

namespace automation {
namespace {

using qkel4x::DateTime;
using qkel4x::KelMeasureModes;
using qkel4x::KelScreenShotModes;

constexpr Type kBoolean{.value = ValueType::kBool};
constexpr Type kShort{.value = ValueType::kInt16};
constexpr Type kLong{.value = ValueType::kInt32};
constexpr Type kDouble{.value = ValueType::kDouble};
constexpr Type kDate{.value = ValueType::kDateTime};
constexpr Type kText{.value = ValueType::kText};
constexpr Type kBytes{.value = ValueType::kBytes};

Value Text(const char* text) { return std::string(text); }
Value Short(int number) { return Value(std::in_place_type<std::int16_t>, static_cast<std::int16_t>(number)); }

std::int32_t Fault(const Value& value, const Type& type) {
  try {
    static_cast<void>(Convert(value, type));
  } catch (const host::AutomationError& error) {
    return error.Number();
  }
  return 0;
}

TEST(Convert, RoundsToTheNearestIntegerHalvesToEven) {
  EXPECT_EQ(Convert(2.5, kLong), Value(2));
  EXPECT_EQ(Convert(3.5, kLong), Value(4));
  EXPECT_EQ(Convert(-2.5, kLong), Value(-2));
  EXPECT_EQ(Convert(14.0, kLong), Value(14));
  EXPECT_EQ(Convert(0.5, kShort), Short(0));
  EXPECT_EQ(Convert(32767.4, kShort), Short(32767));
  EXPECT_EQ(Convert(Text(" 1.5 "), kShort), Short(2));
}

TEST(Convert, OverflowsWith6) {
  EXPECT_EQ(Fault(32767.5, kShort), 6);
  EXPECT_EQ(Fault(-32769, kShort), 6);
  EXPECT_EQ(Fault(40000, kShort), 6);
  EXPECT_EQ(Fault(2147483648.0, kLong), 6);
  EXPECT_EQ(Fault(std::numeric_limits<double>::quiet_NaN(), kLong), 6);
  EXPECT_EQ(Fault(Text("1E+12"), kLong), 6);
}

TEST(Convert, TrueIsMinusOne) {
  EXPECT_EQ(Convert(true, kLong), Value(-1));
  EXPECT_EQ(Convert(true, kShort), Short(-1));
  EXPECT_EQ(Convert(true, kDouble), Value(-1.0));
  EXPECT_EQ(Convert(false, kDouble), Value(0.0));
  EXPECT_EQ(Convert(-1, kBoolean), Value(true));
  EXPECT_EQ(Convert(0.1, kBoolean), Value(true));
  EXPECT_EQ(Convert(0, kBoolean), Value(false));
  EXPECT_EQ(Convert(Text("tRUE"), kBoolean), Value(true));
  EXPECT_EQ(Convert(Text("0"), kBoolean), Value(false));
  EXPECT_EQ(Fault(Text("yes"), kBoolean), 13);
}

TEST(Convert, NumbersAndTextsTurnIntoEachOther) {
  EXPECT_EQ(Convert(Text("-.5"), kDouble), Value(-0.5));
  EXPECT_EQ(Convert(Text("57.1E6"), kDouble), Value(57100000.0));
  EXPECT_EQ(Convert(7, kDouble), Value(7.0));
  EXPECT_EQ(Convert(1234567.0, kText), Text("1234567"));
  EXPECT_EQ(Convert(0.5, kText), Text("0.5"));
  EXPECT_EQ(Convert(true, kText), Text("True"));
  EXPECT_EQ(Convert(Short(-3), kText), Text("-3"));
}

TEST(Convert, NothingCountsAsZero) {
  EXPECT_EQ(Convert({}, kLong), Value(0));
  EXPECT_EQ(Convert({}, kDouble), Value(0.0));
  EXPECT_EQ(Convert({}, kBoolean), Value(false));
  EXPECT_EQ(Convert({}, kText), Text(""));
  EXPECT_EQ(Convert({}, kBytes), Value(Bytes{}));
}

TEST(Convert, RefusesWhatIsNoSuchValueWith13) {
  EXPECT_EQ(Fault(Text("abc"), kDouble), 13);
  EXPECT_EQ(Fault(Text("5 dB"), kDouble), 13);
  EXPECT_EQ(Fault(Text(""), kLong), 13);
  EXPECT_EQ(Fault(Bytes{1}, kLong), 13);
  EXPECT_EQ(Fault(Bytes{1}, kText), 13);
  EXPECT_EQ(Fault(Statistics(), kDouble), 13);
  EXPECT_EQ(Fault(5, kBytes), 13);
  EXPECT_EQ(Fault(5, {.value = ValueType::kStatistics}), 13);
}

TEST(Convert, SaysWhatWasWrong) {
  try {
    static_cast<void>(
        Convert(Text("abc"), {.value = ValueType::kInt32, .enumeration = &kEnumeration<KelMeasureModes>}));
    FAIL();
  } catch (const host::AutomationError& error) {
    EXPECT_STREQ(error.what(), "Type mismatch: \"abc\" is no KelMeasureModes");
  }
}

TEST(Convert, ReadsDatesAndTimes) {
  EXPECT_EQ(Convert(Text("12:00:00"), kDate), Value(DateTime{0.5}));
  EXPECT_EQ(Convert(Text("1899-12-30"), kDate), Value(DateTime{0.0}));
  EXPECT_EQ(Convert(Text("2009-01-05"), kDate), Value(DateTime{39818.0}));
  EXPECT_EQ(Convert(Text("2009-01-05 06:00:00"), kDate), Value(DateTime{39818.25}));
  EXPECT_EQ(Convert(Text("2009-01-05T18:00:00"), kDate), Value(DateTime{39818.75}));
  EXPECT_EQ(Convert(Text("39818.5"), kDate), Value(DateTime{39818.5}));
  EXPECT_EQ(Convert(39818, kDate), Value(DateTime{39818.0}));
  EXPECT_EQ(Convert(DateTime{0.5}, kDouble), Value(0.5));
  for (const char* wrong :
       {"24:00:00", "12:60:00", "12:00", "2009-02-30", "2009-1", "-1:00:00", "2009-01-05 x"}) {
    EXPECT_EQ(Fault(Text(wrong), kDate), 13) << wrong;
  }
}

TEST(ValueText, WritesDatesAsConvertReadsThem) {
  EXPECT_EQ(ValueText(DateTime{39818.75}), "2009-01-05 18:00:00");
  EXPECT_EQ(ValueText(DateTime{39818.0}), "2009-01-05");
  EXPECT_EQ(ValueText(DateTime{0.0}), "00:00:00");
  EXPECT_EQ(ValueText(DateTime{50589.0 / 86400.0}), "14:03:09");
  EXPECT_EQ(ValueText(DateTime{39817.9999999}), "2009-01-05");
  EXPECT_EQ(ValueText(Bytes(3)), "3 bytes");
}

TEST(EnumeratorValue, FindsNamesInAnyLetterCase) {
  const Enumeration& modes = kEnumeration<KelMeasureModes>;
  EXPECT_EQ(EnumeratorValue(modes, "kelepat"), 11);
  EXPECT_EQ(EnumeratorValue(modes, " kelUndefined"), -1);
  EXPECT_EQ(EnumeratorValue(modes, "EPAT"), std::nullopt);
  EXPECT_EQ(EnumeratorValue(modes, "kelNORM+kelPAR"), std::nullopt);
  EXPECT_EQ(EnumeratorName(modes, 19), "kelCENV");
  EXPECT_EQ(EnumeratorName(modes, 20), "");
}

TEST(EnumeratorValue, CombinesFlags) {
  const Enumeration& shots = kEnumeration<KelScreenShotModes>;
  EXPECT_EQ(EnumeratorValue(shots, "kelCapture+kelTransfer"), 3);
  EXPECT_EQ(EnumeratorValue(shots, "kelcapture | kelIncludeHeader"), 5);
  EXPECT_EQ(EnumeratorValue(shots, "kelCapture+"), std::nullopt);
  EXPECT_EQ(EnumeratorName(shots, 7), "kelCapture+kelTransfer+kelIncludeHeader");
  EXPECT_EQ(EnumeratorName(shots, 8), "");
}

TEST(ParseEnumerator, TakesNumbersAndListsTheNames) {
  EXPECT_EQ(ParseEnumerator(kEnumeration<qkel4x::KelSwitchStates>, "1"), 1);
  EXPECT_EQ(ParseEnumerator(kEnumeration<qkel4x::KelSwitchStates>, "KELON"), 1);
  try {
    static_cast<void>(ParseEnumerator(kEnumeration<qkel4x::KelSwitchStates>, "on"));
    FAIL();
  } catch (const host::AutomationError& error) {
    EXPECT_EQ(error.Number(), 13);
    EXPECT_STREQ(error.what(), "\"on\" is no KelSwitchStates; there are kelOff, kelOn, or their numbers");
  }
}

}  // namespace
}  // namespace automation

// Numbers to text and back.
#include "driver/core/number_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "host/automation_error.h"

namespace qkel4x {
namespace {

std::string General(double number) { return std::string(std::string_view(GeneralText(number))); }
std::string Signed(double number) { return std::string(std::string_view(SignPositionText(number))); }

template <class Call>
std::int32_t NumberOfFailure(const Call& call) {
  try {
    call();
  } catch (const host::AutomationError& error) {
    return error.Number();
  }
  return 0;
}

TEST(TrimBlanks, TakesBlanksOffBothEndsAndNothingElse) {
  EXPECT_EQ(TrimBlanks("  a b  "), "a b");
  EXPECT_EQ(TrimBlanks("\ta\t"), "\ta\t");
  EXPECT_EQ(TrimBlanks("   "), "");
  EXPECT_EQ(TrimBlanks(""), "");
}

TEST(LeadingNumber, ReadsUntilTheFirstCharacterThatCannotContinue) {
  EXPECT_EQ(LeadingNumber("12.5"), 12.5);
  EXPECT_EQ(LeadingNumber("  -3.25 dB"), -3.25);
  EXPECT_EQ(LeadingNumber("+7"), 7.0);
  EXPECT_EQ(LeadingNumber(".5"), 0.5);
  EXPECT_EQ(LeadingNumber("5."), 5.0);
  EXPECT_EQ(LeadingNumber("1.2.3"), 1.2);
  EXPECT_EQ(LeadingNumber("1,5"), 1.0);
  EXPECT_EQ(LeadingNumber("1.5E3"), 1500.0);
  EXPECT_EQ(LeadingNumber("1.5e-3x"), 0.0015);
  EXPECT_EQ(LeadingNumber("1e"), 1.0);
  EXPECT_EQ(LeadingNumber("1e+"), 1.0);
  EXPECT_EQ(LeadingNumber("10762237.8"), 10762237.8);
}

TEST(LeadingNumber, IsZeroWithoutANumber) {
  for (const char* text : {"", " ", "F", "-", "+", ".", "-.", "e5", "inf", "nan", "OVER", "--5"}) {
    EXPECT_EQ(LeadingNumber(text), 0.0) << text;
  }
}

TEST(LeadingNumber, FailsBeyondADouble) {
  EXPECT_EQ(NumberOfFailure([] { LeadingNumber("1E400"); }), host::kOverflow);
  EXPECT_EQ(NumberOfFailure([] { LeadingNumber("-0.12e0123456789"); }), host::kOverflow);
  EXPECT_EQ(NumberOfFailure([] { LeadingNumber("1e99999999999"); }), host::kOverflow);
  EXPECT_EQ(NumberOfFailure([] { LeadingNumber("1" + std::string(400, '0') + ".5e-20"); }), host::kOverflow);
  EXPECT_EQ(LeadingNumber("12345e-400"), 0.0);
  EXPECT_EQ(LeadingNumber("1e-99999999999"), 0.0);
  EXPECT_EQ(LeadingNumber("0." + std::string(400, '0') + "1e+20"), 0.0);
}

TEST(NumberFromText, TakesAWholeTextOrFails) {
  EXPECT_EQ(NumberFromText(" 42 "), 42.0);
  EXPECT_EQ(NumberFromText("-1.5E3"), -1500.0);
  for (const char* text : {"", " ", "x", "4x", "4 5", "0x10", "inf", "nan"}) {
    EXPECT_EQ(NumberOfFailure([&] { NumberFromText(text); }), host::kTypeMismatch) << text;
    EXPECT_FALSE(WholeNumberText(text)) << text;
  }
}

TEST(Round, TakesHalvesToTheEvenNeighbour) {
  EXPECT_EQ(RoundToInt16(0.5), 0);
  EXPECT_EQ(RoundToInt16(1.5), 2);
  EXPECT_EQ(RoundToInt16(2.5), 2);
  EXPECT_EQ(RoundToInt16(-0.5), 0);
  EXPECT_EQ(RoundToInt16(-1.5), -2);
  EXPECT_EQ(RoundToInt32(2.5), 2);
  EXPECT_EQ(RoundToInt32(3.5), 4);
}

TEST(Round, FailsOutsideTheType) {
  EXPECT_EQ(RoundToInt16(32767.4), 32767);
  EXPECT_EQ(RoundToInt16(-32768.5), -32768);
  EXPECT_EQ(NumberOfFailure([] { RoundToInt16(32767.5); }), host::kOverflow);
  EXPECT_EQ(NumberOfFailure([] { RoundToInt16(-32769.0); }), host::kOverflow);
  EXPECT_EQ(RoundToInt32(2147483647.4), 2147483647);
  EXPECT_EQ(RoundToInt32(-2147483648.5), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(NumberOfFailure([] { RoundToInt32(2147483647.5); }), host::kOverflow);
  EXPECT_EQ(NumberOfFailure([] { RoundToInt32(1e300); }), host::kOverflow);
  EXPECT_EQ(NumberOfFailure([] { RoundToInt16(std::nan("")); }), host::kOverflow);
}

TEST(BooleanFromText, KnowsWordsAndNumbers) {
  for (const char* text : {"true", "TRUE", "True", "1", "-1", "0.5", "2"})
    EXPECT_TRUE(BooleanFromText(text)) << text;
  for (const char* text : {"false", "FALSE", "fAlSe", "0", "0.0", "-0"})
    EXPECT_FALSE(BooleanFromText(text)) << text;
  for (const char* text : {"", "yes", "truex", "1x"}) {
    EXPECT_EQ(NumberOfFailure([&] { BooleanFromText(text); }), host::kTypeMismatch) << text;
  }
}

TEST(DecimalText, IsPlain) {
  EXPECT_EQ(std::string_view(DecimalText(0)), "0");
  EXPECT_EQ(std::string_view(DecimalText(-5)), "-5");
  EXPECT_EQ(std::string_view(DecimalText(std::numeric_limits<std::int32_t>::min())), "-2147483648");
}

TEST(GeneralText, HasTheShortestDigitsAndNoExponentBelow1E15) {
  EXPECT_EQ(General(0.0), "0");
  EXPECT_EQ(General(-0.0), "0");
  EXPECT_EQ(General(25.0), "25");
  EXPECT_EQ(General(56.01), "56.01");
  EXPECT_EQ(General(0.5), "0.5");
  EXPECT_EQ(General(-0.25), "-0.25");
  EXPECT_EQ(General(500000000.0), "500000000");
  EXPECT_EQ(General(10000000010.0), "10000000010");
  EXPECT_EQ(General(999999999999999.0), "999999999999999");
  EXPECT_EQ(General(100000000000000.0), "100000000000000");
  EXPECT_EQ(General(1e15), "1E+15");
  EXPECT_EQ(General(1.5e20), "1.5E+20");
  EXPECT_EQ(General(0.1 + 0.2), "0.30000000000000004");
  EXPECT_EQ(General(0.00001), "0.00001");
}

TEST(GeneralText, NamesWhatIsNoNumber) {
  EXPECT_EQ(General(std::numeric_limits<double>::quiet_NaN()), "NaN");
  EXPECT_EQ(General(std::numeric_limits<double>::infinity()), "Infinity");
  EXPECT_EQ(General(-std::numeric_limits<double>::infinity()), "-Infinity");
}

TEST(GeneralText, ReadsBackAsTheSameNumber) {
  for (const double number : {1.0 / 3.0, 10762237.762237762, 1e-300, 4.9e-324, 123456.789, 1e22, -2.5e-7}) {
    EXPECT_EQ(LeadingNumber(General(number)), number) << General(number);
  }
}

TEST(SignPositionText, KeepsAPlaceForTheSign) {
  EXPECT_EQ(Signed(0.0), " 0");
  EXPECT_EQ(Signed(-0.0), " 0");
  EXPECT_EQ(Signed(25.0), " 25");
  EXPECT_EQ(Signed(2.5), " 2.5");
  EXPECT_EQ(Signed(-4.48), "-4.48");
  EXPECT_EQ(Signed(0.5), " .5");
  EXPECT_EQ(Signed(-0.5), "-.5");
  EXPECT_EQ(Signed(500000000.0), " 500000000");
}

TEST(RoundToDecimals, TakesHalvesAwayFromZeroOnTheDigitsThatPeopleSee) {
  EXPECT_EQ(RoundToDecimals(0.25, 1), 0.3);
  EXPECT_EQ(RoundToDecimals(-0.25, 1), -0.3);
  EXPECT_EQ(RoundToDecimals(0.15, 1), 0.2);
  EXPECT_EQ(RoundToDecimals(1.005, 2), 1.01);
  EXPECT_EQ(RoundToDecimals(10762237.76, 1), 10762237.8);
  EXPECT_EQ(RoundToDecimals(9.99, 1), 10.0);
  EXPECT_EQ(RoundToDecimals(0.04, 1), 0.0);
  EXPECT_EQ(RoundToDecimals(5e8, 1), 5e8);
  EXPECT_EQ(RoundToDecimals(10000000009.0, 1), 10000000009.0);
}

}  // namespace
}  // namespace qkel4x

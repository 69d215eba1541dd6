// Conversions between automation values, and their forms as text.
#include "automation/value.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <limits>
#include <optional>

#include "automation/enumeration_table.h"
#include "driver/core/number_text.h"
#include "driver/core/raise.h"
#include "host/automation_error.h"

namespace automation {
namespace {

using qkel4x::DateTime;
using qkel4x::DecimalText;
using qkel4x::GeneralText;
using qkel4x::Join;

constexpr double kSecondsPerDay = 86400.0;

std::string Shown(const Value& value) {
  switch (TypeOf(value)) {
    case ValueType::kNothing:
      return "nothing";
    case ValueType::kText:
      return Join("\"", std::get<std::string>(value), "\"");
    case ValueType::kBytes:
      return "an array of bytes";
    case ValueType::kStatistics:
    case ValueType::kSettings:
      return "an object";
    default:
      return ValueText(value);
  }
}

[[noreturn]] void Mismatch(const Value& value, const Type& type) {
  throw host::AutomationError(host::kTypeMismatch, "QKEL4x",
                              Join("Type mismatch: ", Shown(value), " is no ", TypeName(type)));
}

[[noreturn]] void Overflow(const Value& value, const Type& type) {
  throw host::AutomationError(host::kOverflow, "QKEL4x",
                              Join("Overflow: ", Shown(value), " does not fit a ", TypeName(type)));
}

/// Fields of exactly `digits` digits each, `separator` between them; nothing where the text is another.
template <std::size_t kFields>
std::optional<std::array<int, kFields>> Fields(std::string_view text, char separator,
                                               std::array<std::size_t, kFields> longest) {
  std::array<int, kFields> fields{};
  for (std::size_t i = 0; i < kFields; ++i) {
    const std::string_view field = text.substr(0, text.find(separator));
    if (field.empty() || field.size() > longest[i]) return {};
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), fields[i]);
    if (error != std::errc() || end != field.data() + field.size()) return {};
    text.remove_prefix(field.size());
    if (i + 1 == kFields) break;
    if (text.empty()) return {};
    text.remove_prefix(1);
  }
  return text.empty() ? std::optional(fields) : std::nullopt;
}

std::optional<double> TimeText(std::string_view text) {
  const auto hms = Fields<3>(text, ':', {2, 2, 2});
  if (!hms || (*hms)[0] < 0 || (*hms)[0] > 23 || (*hms)[1] < 0 || (*hms)[1] > 59 || (*hms)[2] < 0 ||
      (*hms)[2] > 59) {
    return {};
  }
  return ((*hms)[0] * 3600 + (*hms)[1] * 60 + (*hms)[2]) / kSecondsPerDay;
}

constexpr std::chrono::sys_days kDayZero = std::chrono::year(1899) / 12 / 30;

std::optional<double> DateText(std::string_view text) {
  const auto fields = Fields<3>(text, '-', {4, 2, 2});
  if (!fields || (*fields)[1] < 1 || (*fields)[2] < 1) return {};
  const std::chrono::year_month_day date(std::chrono::year((*fields)[0]),
                                         std::chrono::month(static_cast<unsigned>((*fields)[1])),
                                         std::chrono::day(static_cast<unsigned>((*fields)[2])));
  if (!date.ok()) return {};
  return static_cast<double>((std::chrono::sys_days(date) - kDayZero).count());
}

/// Days of a date, a time of day, or both.
std::optional<double> DateTimeText(std::string_view text) {
  text = qkel4x::TrimBlanks(text);
  if (const auto time = TimeText(text)) return time;
  const std::size_t gap = text.find_first_of(" T");
  const auto date = DateText(text.substr(0, gap));
  if (!date || gap == std::string_view::npos) return date;
  const auto time = TimeText(text.substr(gap + 1));
  if (!time) return {};
  // Before day zero the time of day counts away from zero.
  return *date >= 0.0 ? *date + *time : *date - *time;
}

double Number(const Value& value, const Type& type) {
  switch (TypeOf(value)) {
    case ValueType::kNothing:
      return 0.0;
    case ValueType::kBool:
      return std::get<bool>(value) ? -1.0 : 0.0;
    case ValueType::kInt16:
      return std::get<std::int16_t>(value);
    case ValueType::kInt32:
      return std::get<std::int32_t>(value);
    case ValueType::kDouble:
      return std::get<double>(value);
    case ValueType::kDateTime:
      return std::get<DateTime>(value).days;
    case ValueType::kText: {
      const std::optional<double> number = qkel4x::WholeNumberText(std::get<std::string>(value));
      if (number) return *number;
      break;
    }
    default:
      break;
  }
  Mismatch(value, type);
}

bool Boolean(const Value& value, const Type& type) {
  if (const auto* text = std::get_if<std::string>(&value)) {
    try {
      return qkel4x::BooleanFromText(*text);
    } catch (const host::AutomationError&) {
      Mismatch(value, type);
    }
  }
  return Number(value, type) != 0.0;
}

template <class Integer>
Value Whole(const Value& value, const Type& type) {
  const double rounded = std::nearbyint(Number(value, type));
  if (!(rounded >= std::numeric_limits<Integer>::min() && rounded <= std::numeric_limits<Integer>::max())) {
    Overflow(value, type);
  }
  return Value(std::in_place_type<Integer>, static_cast<Integer>(rounded));
}

void AppendTwoDigits(std::string& text, int number) {
  if (number < 10) text += '0';
  text += std::string_view(DecimalText(number));
}

/// "2009-01-05", "14:03:09" or both; whole seconds.
std::string DateTimeForm(double days) {
  const double whole = std::trunc(days);
  auto seconds = static_cast<int>(std::lround(std::fabs(days - whole) * kSecondsPerDay));
  auto day = kDayZero + std::chrono::days(static_cast<std::int64_t>(whole));
  if (seconds == static_cast<int>(kSecondsPerDay)) {
    seconds = 0;
    day += std::chrono::days(1);
  }
  std::string text;
  if (day != kDayZero) {
    const std::chrono::year_month_day date(day);
    text = Join(DecimalText(static_cast<int>(date.year())), "-");
    AppendTwoDigits(text, static_cast<int>(static_cast<unsigned>(date.month())));
    text += '-';
    AppendTwoDigits(text, static_cast<int>(static_cast<unsigned>(date.day())));
    if (seconds == 0) return text;
    text += ' ';
  }
  AppendTwoDigits(text, seconds / 3600);
  text += ':';
  AppendTwoDigits(text, seconds / 60 % 60);
  text += ':';
  AppendTwoDigits(text, seconds % 60);
  return text;
}

}  // namespace

std::string_view TypeName(const Type& type) {
  if (type.enumeration != nullptr) return type.enumeration->name;
  switch (type.value) {
    case ValueType::kNothing:
      return "nothing";
    case ValueType::kBool:
      return "boolean";
    case ValueType::kInt16:
      return "16-bit integer";
    case ValueType::kInt32:
      return "32-bit integer";
    case ValueType::kDouble:
      return "64-bit float";
    case ValueType::kDateTime:
      return "date-time";
    case ValueType::kText:
      return "text";
    case ValueType::kBytes:
      return "array of bytes";
    case ValueType::kStatistics:
      return "clsStatistics";
    case ValueType::kSettings:
      return "ParameterNode";
  }
  return {};
}

Value Convert(const Value& value, const Type& type) {
  if (TypeOf(value) == type.value) return value;
  switch (type.value) {
    case ValueType::kBool:
      return Value(std::in_place_type<bool>, Boolean(value, type));
    case ValueType::kInt16:
      return Whole<std::int16_t>(value, type);
    case ValueType::kInt32:
      return Whole<std::int32_t>(value, type);
    case ValueType::kDouble:
      return Value(std::in_place_type<double>, Number(value, type));
    case ValueType::kDateTime: {
      if (const auto* text = std::get_if<std::string>(&value)) {
        if (const auto days = DateTimeText(*text)) return DateTime{*days};
      }
      return DateTime{Number(value, type)};
    }
    case ValueType::kText:
      if (TypeOf(value) > ValueType::kText) Mismatch(value, type);
      return ValueText(value);
    case ValueType::kBytes:
      if (TypeOf(value) != ValueType::kNothing) Mismatch(value, type);
      return Bytes{};
    default:
      Mismatch(value, type);
  }
}

std::string ValueText(const Value& value) {
  switch (TypeOf(value)) {
    case ValueType::kNothing:
      return {};
    case ValueType::kBool:
      return std::get<bool>(value) ? "True" : "False";
    case ValueType::kInt16:
      return std::string(DecimalText(std::get<std::int16_t>(value)));
    case ValueType::kInt32:
      return std::string(DecimalText(std::get<std::int32_t>(value)));
    case ValueType::kDouble:
      return std::string(GeneralText(std::get<double>(value)));
    case ValueType::kDateTime:
      return DateTimeForm(std::get<DateTime>(value).days);
    case ValueType::kText:
      return std::get<std::string>(value);
    case ValueType::kBytes:
      return Join(DecimalText(static_cast<std::int32_t>(std::get<Bytes>(value).size())), " bytes");
    default:
      Mismatch(value, {.value = ValueType::kText});
  }
}

}  // namespace automation

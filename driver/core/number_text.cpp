#include "driver/core/number_text.h"

#include <algorithm>
#include <cassert>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include "driver/core/raise.h"

namespace qkel4x {
namespace {

bool IsDigit(char character) { return character >= '0' && character <= '9'; }

std::size_t DigitsEnd(std::string_view text, std::size_t from) {
  while (from < text.size() && IsDigit(text[from])) ++from;
  return from;
}

/// How many characters at the start of the text form a decimal number, and 0 where none do.
std::size_t NumberLength(std::string_view text) {
  std::size_t position = 0;
  if (position < text.size() && (text[position] == '+' || text[position] == '-')) ++position;
  const std::size_t whole_end = DigitsEnd(text, position);
  std::size_t digits = whole_end - position;
  position = whole_end;
  if (position < text.size() && text[position] == '.') {
    const std::size_t fraction_end = DigitsEnd(text, position + 1);
    digits += fraction_end - (position + 1);
    position = fraction_end;
  }
  if (digits == 0) return 0;
  if (position < text.size() && (text[position] == 'e' || text[position] == 'E')) {
    std::size_t exponent = position + 1;
    if (exponent < text.size() && (text[exponent] == '+' || text[exponent] == '-')) ++exponent;
    const std::size_t exponent_end = DigitsEnd(text, exponent);
    if (exponent_end > exponent) position = exponent_end;
  }
  return position;
}

/// Whether a decimal number is below 1: from_chars does not tell one that is too large for a double from one
/// that is too small.
bool IsBelowOne(std::string_view text) {
  const auto is_mark = [](char character) { return character == 'e' || character == 'E'; };
  const auto mark = std::find_if(text.begin(), text.end(), is_mark);
  std::int64_t exponent = 0;
  if (mark != text.end()) {
    const bool negative = mark[1] == '-';
    const bool has_sign = negative || mark[1] == '+';
    std::int32_t digits = 0;
    if (std::from_chars(mark + (has_sign ? 2 : 1), text.end(), digits).ec != std::errc{}) return negative;
    exponent = negative ? -std::int64_t{digits} : digits;
  }
  const auto is_digit_of_value = [](char character) { return character >= '1' && character <= '9'; };
  const auto first = std::find_if(text.begin(), mark, is_digit_of_value);
  const auto point = std::find(text.begin(), mark, '.');
  return exponent + (point - first) + (first > point ? 1 : 0) <= 0;
}

/// The value of a text that NumberLength has accepted whole.
double ParseNumber(std::string_view text) {
  if (text.front() == '+') text.remove_prefix(1);
  double number = 0.0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error == std::errc::result_out_of_range) {
    if (IsBelowOne(text)) return 0.0;
    RaiseFault(host::kOverflow);
  }
  return number;
}

/// The shortest decimal digits of a finite non-zero number, and where the decimal point stands among them.
struct Digits {
  std::array<char, 20> digits;
  int count = 0;
  int point = 0;  // number of digits before the decimal point; may be negative or beyond count
  bool negative = false;

  std::string_view Text() const { return {digits.data(), static_cast<std::size_t>(count)}; }
};

Digits ShortestDigits(double number) {
  Digits result;
  std::array<char, 32> text;
  const auto [end, error] =
      std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::scientific);
  assert(error == std::errc{});
  std::string_view rest(text.data(), static_cast<std::size_t>(end - text.data()));
  if (rest.front() == '-') {
    result.negative = true;
    rest.remove_prefix(1);
  }
  const std::size_t exponent_at = rest.find('e');
  for (const char character : rest.substr(0, exponent_at)) {
    if (character != '.') result.digits[static_cast<std::size_t>(result.count++)] = character;
  }
  std::string_view exponent_text = rest.substr(exponent_at + 1);
  if (exponent_text.front() == '+') exponent_text.remove_prefix(1);
  int exponent = 0;
  std::from_chars(exponent_text.data(), exponent_text.data() + exponent_text.size(), exponent);
  result.point = exponent + 1;
  return result;
}

constexpr int kExponentFrom = 16;  // digits before the point from which on an exponent is used: 1E+15 has 16

}  // namespace

std::string_view TrimBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

double LeadingNumber(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return 0.0;
  text.remove_prefix(first);
  const std::size_t length = NumberLength(text);
  return length == 0 ? 0.0 : ParseNumber(text.substr(0, length));
}

std::optional<double> WholeNumberText(std::string_view text) {
  text = TrimBlanks(text);
  const std::size_t length = NumberLength(text);
  if (length == 0 || length != text.size()) return std::nullopt;
  return ParseNumber(text);
}

double NumberFromText(std::string_view text) {
  const std::optional<double> number = WholeNumberText(text);
  if (!number) RaiseFault(host::kTypeMismatch);
  return *number;
}

std::int16_t RoundToInt16(double number) {
  const double rounded = std::nearbyint(number);
  if (!(rounded >= std::numeric_limits<std::int16_t>::min() &&
        rounded <= std::numeric_limits<std::int16_t>::max())) {
    RaiseFault(host::kOverflow);
  }
  return static_cast<std::int16_t>(rounded);
}

std::int32_t RoundToInt32(double number) {
  const double rounded = std::nearbyint(number);
  if (!(rounded >= std::numeric_limits<std::int32_t>::min() &&
        rounded <= std::numeric_limits<std::int32_t>::max())) {
    RaiseFault(host::kOverflow);
  }
  return static_cast<std::int32_t>(rounded);
}

bool BooleanFromText(std::string_view text) {
  // Nearly every flag is one digit, and the log switch is read four times for each reading.
  if (text.size() == 1 && IsDigit(text.front())) return text.front() != '0';
  text = TrimBlanks(text);
  const auto is_word = [text](std::string_view word) {
    if (text.size() != word.size()) return false;
    for (std::size_t i = 0; i < word.size(); ++i) {
      if ((text[i] | 0x20) != word[i]) return false;
    }
    return true;
  };
  if (is_word("true")) return true;
  if (is_word("false")) return false;
  return NumberFromText(text) != 0.0;
}

void NumberText::Append(std::string_view text) {
  std::memcpy(characters_.data() + size_, text.data(), text.size());
  size_ = static_cast<std::uint16_t>(size_ + text.size());
}

NumberText DecimalText(std::int32_t number) {
  NumberText text;
  const auto [end, error] = std::to_chars(text.characters_.data(), text.characters_.data() + 16, number);
  text.size_ = static_cast<std::uint16_t>(end - text.characters_.data());
  return text;
}

NumberText GeneralText(double number) {
  NumberText text;
  if (number == 0.0) {
    text.Append("0");
    return text;
  }
  if (!std::isfinite(number)) {
    text.Append(std::isnan(number) ? "NaN" : number < 0 ? "-Infinity" : "Infinity");
    return text;
  }
  const Digits digits = ShortestDigits(number);
  const std::string_view all = digits.Text();
  if (digits.negative) text.Append("-");
  if (digits.point >= kExponentFrom) {
    text.Append(all.substr(0, 1));
    if (all.size() > 1) {
      text.Append(".");
      text.Append(all.substr(1));
    }
    text.Append("E+");
    std::array<char, 8> exponent;
    const auto [end, error] =
        std::to_chars(exponent.data(), exponent.data() + exponent.size(), digits.point - 1);
    text.Append({exponent.data(), static_cast<std::size_t>(end - exponent.data())});
    return text;
  }
  const auto zeros = [&text](int count) {
    while (count-- > 0) text.Append("0");
  };
  if (digits.point <= 0) {
    text.Append("0.");
    zeros(-digits.point);
    text.Append(all);
  } else if (digits.point >= digits.count) {
    text.Append(all);
    zeros(digits.point - digits.count);
  } else {
    text.Append(all.substr(0, static_cast<std::size_t>(digits.point)));
    text.Append(".");
    text.Append(all.substr(static_cast<std::size_t>(digits.point)));
  }
  return text;
}

NumberText SignPositionText(double number) {
  const NumberText general = GeneralText(number);
  std::string_view magnitude = general;
  const bool negative = magnitude.front() == '-';
  if (negative) magnitude.remove_prefix(1);
  if (magnitude.starts_with("0.")) magnitude.remove_prefix(1);
  NumberText text;
  text.Append(negative ? "-" : " ");
  text.Append(magnitude);
  return text;
}

double RoundToDecimals(double number, int decimals) {
  if (number == 0.0 || !std::isfinite(number)) return number;
  Digits digits = ShortestDigits(number);
  const int kept = digits.point + decimals;
  if (kept >= digits.count) return number;
  if (kept < 0) return 0.0;
  const bool up = digits.digits[static_cast<std::size_t>(kept)] >= '5';
  // The kept digits, with a zero in front for a carry out of the first, as a text that from_chars reads.
  std::array<char, 40> text;
  std::size_t size = 0;
  if (digits.negative) text[size++] = '-';
  text[size++] = '0';
  for (int i = 0; i < kept; ++i) text[size++] = digits.digits[static_cast<std::size_t>(i)];
  if (up) {
    std::size_t position = size - 1;
    while (text[position] == '9') text[position--] = '0';
    ++text[position];
  }
  text[size++] = 'e';
  const auto exponent = std::to_chars(text.data() + size, text.data() + text.size(), -decimals);
  double rounded = 0.0;
  std::from_chars(text.data(), exponent.ptr, rounded);
  return rounded;
}

}  // namespace qkel4x

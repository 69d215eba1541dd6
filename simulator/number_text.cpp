// Numbers to and from the instrument's texts.
#include "simulator/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

namespace simulator {
namespace {

// Room for every double below 1e308 in plain digits.
constexpr std::size_t kPlainDigits = 400;

char Upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

}  // namespace

void AppendFixed(std::string& text, double value, int decimals) {
  char digits[kPlainDigits];
  const auto written =
      std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, decimals);
  std::string_view shown(digits, static_cast<std::size_t>(written.ptr - digits));
  if (shown.starts_with('-') && shown.find_first_not_of("-0.") == std::string_view::npos) {
    shown.remove_prefix(1);
  }
  text.append(shown);
}

void AppendPlain(std::string& text, double value) {
  char digits[kPlainDigits];
  const auto written = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed);
  text.append(digits, static_cast<std::size_t>(written.ptr - digits));
}

void AppendScientific(std::string& text, double value) {
  char digits[32];
  const auto written = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::scientific, 1);
  std::replace(digits, written.ptr, 'e', 'E');
  text.append(digits, static_cast<std::size_t>(written.ptr - digits));
}

void AppendErrorRatio(std::string& text, double ratio, double count) {
  if (count < 1.0) {
    text.append("---");
  } else if (ratio * count < 1.0) {
    text.push_back('<');
    AppendScientific(text, 1.0 / count);
  } else {
    AppendScientific(text, ratio);
  }
}

void AppendInteger(std::string& text, long long value) {
  char digits[24];
  const auto written = std::to_chars(digits, digits + sizeof digits, value);
  text.append(digits, static_cast<std::size_t>(written.ptr - digits));
}

std::optional<double> LeadingNumber(std::string_view text, std::string_view& rest) {
  text = Trimmed(text);
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return std::nullopt;
  }
  double value = 0.0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
  if (read.ec != std::errc() || !std::isfinite(value)) return std::nullopt;
  rest = Trimmed(text.substr(static_cast<std::size_t>(read.ptr - text.data())));
  return value;
}

std::string_view Trimmed(std::string_view text) {
  const auto blank = [](char c) { return static_cast<unsigned char>(c) <= ' '; };
  while (!text.empty() && blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && blank(text.back())) text.remove_suffix(1);
  return text;
}

bool EqualInAnyCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() &&
         std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return Upper(x) == Upper(y); });
}

}  // namespace simulator

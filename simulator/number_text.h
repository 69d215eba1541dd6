// Numbers to and from the instrument's texts, without locale or streams.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace simulator {

/// Appends `value` with `decimals` digits after the point; never "-0".
void AppendFixed(std::string& text, double value, int decimals);
/// Appends the shortest digits that read back as `value`, never with an exponent.
void AppendPlain(std::string& text, double value);
/// Appends one digit, a point, one digit and an exponent: 1.8E-03.
void AppendScientific(std::string& text, double value);
/// Appends an error ratio that was counted over `count` units: with less than one error expected only its
/// bound is known, and without any unit nothing is ("---").
void AppendErrorRatio(std::string& text, double ratio, double count);
void AppendInteger(std::string& text, long long value);

/// The leading number of `text` (blanks before it, sign, exponent allowed), finite, with what follows it in
/// `rest`.
std::optional<double> LeadingNumber(std::string_view text, std::string_view& rest);

/// `text` without the white space of IEEE 488.2 (codes 0 to 32) at both ends.
std::string_view Trimmed(std::string_view text);
/// Equality of ASCII texts in any letter case.
bool EqualInAnyCase(std::string_view a, std::string_view b);

}  // namespace simulator

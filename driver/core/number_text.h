// Numbers to text and back, in the forms that the instrument and the error texts use. No locale, no streams.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qkel4x {

/// The text without the blanks at both ends.
std::string_view TrimBlanks(std::string_view text);

/// The number at the start of a text: decimal point ".", leading blanks skipped, reading stops at the first
/// character that cannot continue a number; 0 where there is none. Fails with 6 where the number is too large
/// for a double.
double LeadingNumber(std::string_view text);

/// The whole text as a number, blanks around it allowed; nothing where it is none.
std::optional<double> WholeNumberText(std::string_view text);

/// The whole text as a number. Fails with 13 where it is none.
double NumberFromText(std::string_view text);

/// To the nearest integer, halves to the even one. Fails with 6 outside the type.
std::int16_t RoundToInt16(double number);
std::int32_t RoundToInt32(double number);

/// "true" and "false" in any letter case, or any number, nonzero being true. Fails with 13 on anything else.
bool BooleanFromText(std::string_view text);

/// A number as text on the stack; converts to string_view.
class NumberText {
 public:
  operator std::string_view() const { return {characters_.data(), size_}; }  // NOLINT: meant to be implicit

 private:
  friend NumberText GeneralText(double);
  friend NumberText SignPositionText(double);
  friend NumberText DecimalText(std::int32_t);
  void Append(std::string_view text);

  // The longest is a tiny number written without an exponent: sign, "0.", 323 zeros, 17 digits.
  std::array<char, 352> characters_;
  std::uint16_t size_ = 0;
};

/// A whole number in plain decimal.
NumberText DecimalText(std::int32_t number);

/// The shortest digits that read back as the same number; an exponent only from 1E+15 on ("0.5", "1234567",
/// "1E+15").
NumberText GeneralText(double number);

/// As GeneralText, with a blank in the sign's place for non-negative numbers and no zero before the decimal
/// point
/// (" 25", " .5", "-.5", "-4.48").
NumberText SignPositionText(double number);

/// Rounded to that many decimals, halves away from zero, on the number's shortest decimal digits.
double RoundToDecimals(double number, int decimals);

}  // namespace qkel4x

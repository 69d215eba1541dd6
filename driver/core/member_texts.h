// The literals that every public member owns for its error handler.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "driver/core/error_constants.h"

namespace qkel4x {

/// A text of a fixed greatest length, made while compiling.
template <std::size_t kCapacity>
struct FixedText {
  std::array<char, kCapacity> characters{};
  std::size_t size = 0;

  constexpr FixedText& operator+=(std::string_view text) {
    for (const char character : text) characters[size++] = character;
    return *this;
  }
  constexpr operator std::string_view() const {
    return {characters.data(), size};
  }  // NOLINT: meant to be implicit
};

/// What the handler of one access raises: with the link's trouble known (long), or for any other failure
/// (short).
struct MemberTexts {
  FixedText<64> source;
  FixedText<96> long_description;
  FixedText<80> short_description;
  ErrorConstants long_number = qkelQueryFailed;
  ErrorConstants short_number = qkelQueryFailed;
};

/// The texts of an access that is called `access` in its descriptions ("Get Mode") and fails with `number`.
consteval MemberTexts TextsOf(std::string_view member, std::string_view access, ErrorConstants number) {
  MemberTexts texts;
  texts.source += "clsKEL4x.";
  texts.source += member;
  texts.long_description += access;
  texts.long_description += " failed.  Error : ";
  texts.short_description += access;
  texts.short_description += " failed";
  texts.long_number = number;
  texts.short_number = number;
  return texts;
}

/// "Get <member> failed": property reads.
consteval MemberTexts ReadTexts(std::string_view member) {
  FixedText<80> access;
  access += "Get ";
  access += member;
  return TextsOf(member, access, qkelQueryFailed);
}

/// "Let <member> failed": property writes.
consteval MemberTexts WriteTexts(std::string_view member) {
  FixedText<80> access;
  access += "Let ";
  access += member;
  return TextsOf(member, access, qkelCommandFailed);
}

/// "<member> failed": methods.
consteval MemberTexts MethodTexts(std::string_view member) {
  return TextsOf(member, member, qkelCommandFailed);
}

}  // namespace qkel4x

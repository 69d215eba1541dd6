// The shape of a setting that is one instrument mnemonic out of a short list.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "driver/core/member_texts.h"

namespace qkel4x {

/// One enumerator and its mnemonic in both directions.
struct Mnemonic {
  std::int32_t value;
  std::string_view sent;
  std::string_view answered = sent;           ///< what a reply must be, whole
  std::string_view also_answered = answered;  ///< a second reply with the same meaning
};

/// What a text is put between. Without an end the text before it stands alone, without a value.
struct TextAround {
  std::string_view before;
  std::string_view after = {};
};

/// A setting that is written with a mnemonic and read back as one.
struct EnumSetting {
  MemberTexts let;
  MemberTexts get;
  std::string_view write;  ///< followed directly by the mnemonic
  std::string_view query;
  std::optional<std::string_view>
      choices;  ///< the replies that the query accepts; none accepts all but "---"
  std::span<const Mnemonic> mnemonics;
  TextAround refused;  ///< description of error 380 for a value without mnemonic, around the value
  std::string_view refusing_source;         ///< source of that error
  ErrorConstants unrecognised_number = {};  ///< error for a reply without meaning; none: it reads 0
  TextAround unrecognised = {};             ///< its description, around the reply
};

}  // namespace qkel4x

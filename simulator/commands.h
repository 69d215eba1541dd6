// The command language: one row for each header.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "simulator/model.h"

namespace simulator {

using Parameters = std::span<const std::string_view>;

/// A set of measurement modes as bits.
using ModeSet = std::uint32_t;

template <typename... Modes>
constexpr ModeSet In(Modes... modes) {
  return (... | (ModeSet{1} << static_cast<unsigned>(modes)));
}

/// What a reading needs before it can be answered; without it the answer is "---".
enum class Needs { kNothing, kCarrier, kFec };

struct Command {
  std::string_view header;
  ScpiError (*set)(Model&, Parameters) = nullptr;
  void (*get)(Model&, std::string& reply) = nullptr;
  Effect effect = Effect::kNone;
  std::uint8_t parameters = 1;  ///< that the setter takes
  ModeSet modes = 0;            ///< in which the reading is computed; 0: in all
  Needs needs = Needs::kNothing;
  double since_firmware = 0.0;
};

/// All commands of the instrument.
std::span<const Command> Commands();

}  // namespace simulator

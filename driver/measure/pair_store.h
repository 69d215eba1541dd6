// The stored lines of an echo pattern or a jitter spectrum: pairs of texts as the instrument sent them.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "driver/core/number_text.h"
#include "driver/core/reply_status.h"

namespace qkel4x {

/// So many pairs, numbered from 1 for the host; "---" marks a value that the instrument did not report.
template <std::size_t kPairs>
struct PairStore {
  std::array<std::string, kPairs> first;   ///< attenuations of echoes, values of jitter lines
  std::array<std::string, kPairs> second;  ///< delays of echoes, frequencies of jitter lines
  bool valid = false;                      ///< whether the texts may be read without measuring again

  /// Takes a raw reply: quotes off, fields at commas, pair by pair. A reply with too few fields leaves no
  /// value at all.
  void Store(std::string_view reply) {
    reply = WithoutQuotes(reply);
    for (std::size_t i = 0; i < kPairs; ++i) {
      first[i].clear();
      second[i].clear();
    }
    if (!PieceAt(reply, ',', 2 * kPairs - 1).data()) {
      reply = {};
    }
    ForEachPiece(reply, ',', [this](std::size_t field, std::string_view piece) {
      if (field < 2 * kPairs) (field % 2 == 0 ? first : second)[field / 2] = TrimBlanks(piece);
    });
    for (std::size_t i = 0; i < kPairs; ++i) {
      if (first[i].empty()) first[i] = kNoStatus;
      if (second[i].empty()) second[i] = kNoStatus;
    }
    valid = true;
  }
};

}  // namespace qkel4x

// Follows a definite-length block, "#<n><n digits: length><data>", while its bytes are read piece by piece.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace workbench {

/// Tells a port how much of a block reply is still to come, whatever pieces the caller reads it in.
class BlockProgress {
 public:
  enum class State {
    kNone,      ///< no block reply is being read
    kHeader,    ///< before the first data byte
    kData,      ///< between the first and the last data byte
    kComplete,  ///< all announced data has been read; the terminator has not
    kText,      ///< the reply is no block at all: it does not begin with "#"
    kDamaged,   ///< the header is not one of a definite-length block, or more was read than it announced
  };

  /// A block reply is about to be read from its first byte.
  void Begin() {
    *this = {};
    state_ = State::kHeader;
  }
  /// No block reply is being read any more.
  void Forget() { state_ = State::kNone; }
  void Consume(std::span<const std::uint8_t> bytes);

  /// Not a byte of the reply has been read.
  bool AtStart() const { return state_ == State::kHeader && position_ == 0; }
  State Now() const { return state_; }
  /// Data bytes still to come, in state kData.
  std::size_t Remaining() const { return remaining_; }

 private:
  State state_ = State::kNone;
  int position_ = 0;  // in the header
  int digits_ = 0;    // of the length
  std::size_t remaining_ = 0;
};

}  // namespace workbench

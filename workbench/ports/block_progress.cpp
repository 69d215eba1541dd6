#include "workbench/ports/block_progress.h"

#include <algorithm>

namespace workbench {

void BlockProgress::Consume(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    if (state_ == State::kData) {
      const std::size_t taken = std::min(remaining_, bytes.size());
      remaining_ -= taken;
      bytes = bytes.subspan(taken);
      if (remaining_ == 0) state_ = State::kComplete;
      continue;
    }
    if (state_ == State::kComplete) state_ = State::kDamaged;
    if (state_ != State::kHeader) return;

    const std::uint8_t byte = bytes.front();
    bytes = bytes.subspan(1);
    const bool is_digit = byte >= '0' && byte <= '9';
    if (position_ == 0 ? byte != '#' : !is_digit) {
      state_ = position_ == 0 ? State::kText : State::kDamaged;
    } else if (position_ == 1) {
      digits_ = byte - '0';
      if (digits_ == 0) state_ = State::kDamaged;  // the indefinite form: only its terminator ends it
    } else if (position_ > 1) {
      remaining_ = remaining_ * 10 + static_cast<std::size_t>(byte - '0');
      if (position_ == digits_ + 1) state_ = remaining_ == 0 ? State::kComplete : State::kData;
    }
    ++position_;
  }
}

}  // namespace workbench

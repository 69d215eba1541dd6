// The instrument's error queue with the numbers and texts of SCPI-99, volume 2, chapter 21.
#pragma once

#include <array>
#include <cstddef>
#include <string>

namespace simulator {

enum class ScpiError : short {
  kNone = 0,
  kInvalidCharacter = -101,
  kDataType = -104,
  kParameterNotAllowed = -108,
  kMissingParameter = -109,
  kUndefinedHeader = -113,
  kInvalidSuffix = -131,
  kSettingsConflict = -221,
  kDataOutOfRange = -222,
  kIllegalParameterValue = -224,
  kHardwareMissing = -241,
  kQueueOverflow = -350,
  kInputBufferOverrun = -363,
  kQueryDeadlocked = -430,
};

/// First in, first out; the newest entry becomes -350 when there is no room.
class ErrorQueue {
 public:
  void Push(ScpiError error);
  /// Removes the oldest entry; kNone when empty.
  ScpiError Pop();
  void Clear() { count_ = 0; }
  bool Empty() const { return count_ == 0; }

 private:
  static constexpr std::size_t kCapacity = 20;
  std::array<ScpiError, kCapacity> entries_{};
  std::size_t first_ = 0;
  std::size_t count_ = 0;
};

/// Appends number and text, for example -113,"Undefined header".
void AppendError(std::string& text, ScpiError error);

/// The bit that `error` sets in the standard event status register of IEEE 488.2.
unsigned EventStatusBit(ScpiError error);

}  // namespace simulator

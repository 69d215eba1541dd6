// The instrument's error queue.
#include "simulator/error_queue.h"

#include <string_view>

#include "simulator/number_text.h"

namespace simulator {
namespace {

std::string_view Description(ScpiError error) {
  switch (error) {
    case ScpiError::kNone:
      return "No error";
    case ScpiError::kInvalidCharacter:
      return "Invalid character";
    case ScpiError::kDataType:
      return "Data type error";
    case ScpiError::kParameterNotAllowed:
      return "Parameter not allowed";
    case ScpiError::kMissingParameter:
      return "Missing parameter";
    case ScpiError::kUndefinedHeader:
      return "Undefined header";
    case ScpiError::kInvalidSuffix:
      return "Invalid suffix";
    case ScpiError::kSettingsConflict:
      return "Settings conflict";
    case ScpiError::kDataOutOfRange:
      return "Data out of range";
    case ScpiError::kIllegalParameterValue:
      return "Illegal parameter value";
    case ScpiError::kHardwareMissing:
      return "Hardware missing";
    case ScpiError::kQueueOverflow:
      return "Queue overflow";
    case ScpiError::kInputBufferOverrun:
      return "Input buffer overrun";
    case ScpiError::kQueryDeadlocked:
      return "Query DEADLOCKED";
  }
  return "";
}

}  // namespace

void ErrorQueue::Push(ScpiError error) {
  if (count_ == kCapacity) {
    entries_[(first_ + count_ - 1) % kCapacity] = ScpiError::kQueueOverflow;
    return;
  }
  entries_[(first_ + count_) % kCapacity] = error;
  ++count_;
}

ScpiError ErrorQueue::Pop() {
  if (count_ == 0) return ScpiError::kNone;
  const ScpiError oldest = entries_[first_];
  first_ = (first_ + 1) % kCapacity;
  --count_;
  return oldest;
}

void AppendError(std::string& text, ScpiError error) {
  AppendInteger(text, static_cast<int>(error));
  text.append(",\"").append(Description(error)).push_back('"');
}

unsigned EventStatusBit(ScpiError error) {
  const int number = -static_cast<int>(error);
  if (number >= 400) return 1U << 2;
  if (number >= 300) return 1U << 3;
  if (number >= 200) return 1U << 4;
  return number >= 100 ? 1U << 5 : 0U;
}

}  // namespace simulator

// One instrument used from several threads.
#pragma once

#include <chrono>
#include <mutex>
#include <string_view>
#include <utility>

#include "simulator/instrument.h"

namespace simulator {

class SharedInstrument {
 public:
  SharedInstrument(Configuration configuration, std::function<double()> now_seconds)
      : instrument_(std::move(configuration), std::move(now_seconds)) {}

  void Execute(std::string_view line, Instrument::Answer& answer) {
    const auto turn = Turn();
    instrument_.Execute(line, answer);
  }
  bool Continue(Instrument::Execution& execution, std::chrono::steady_clock::time_point until) {
    const auto turn = Turn();
    return instrument_.Continue(execution, until);
  }
  void InputOverrun() {
    const auto turn = Turn();
    instrument_.InputOverrun();
  }
  void ReplaceSignal(Signal signal) {
    const auto turn = Turn();
    instrument_.ReplaceSignal(std::move(signal));
  }

 private:
  // Who waits keeps the door shut, so that a thread that has work without end cannot slip in again first.
  std::unique_lock<std::mutex> Turn() {
    const std::lock_guard door(door_);
    return std::unique_lock(mutex_);
  }

  std::mutex door_;
  std::mutex mutex_;
  Instrument instrument_;
};

}  // namespace simulator

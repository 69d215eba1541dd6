// One instrument used from several threads.
#pragma once

#include <mutex>
#include <utility>

#include "simulator/instrument.h"

namespace simulator {

class SharedInstrument {
 public:
  SharedInstrument(Configuration configuration, std::function<double()> now_seconds)
      : instrument_(std::move(configuration), std::move(now_seconds)) {}

  void Execute(std::string_view line, Instrument::Answer& answer) {
    const std::lock_guard lock(mutex_);
    instrument_.Execute(line, answer);
  }
  void InputOverrun() {
    const std::lock_guard lock(mutex_);
    instrument_.InputOverrun();
  }
  void ReplaceSignal(Signal signal) {
    const std::lock_guard lock(mutex_);
    instrument_.ReplaceSignal(std::move(signal));
  }

 private:
  std::mutex mutex_;
  Instrument instrument_;
};

}  // namespace simulator

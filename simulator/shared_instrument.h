// One instrument used from several threads.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
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
    const std::lock_guard turn(queue_);
    instrument_.Execute(line, answer);
  }
  bool Continue(Instrument::Execution& execution, std::chrono::steady_clock::time_point until) {
    const std::lock_guard turn(queue_);
    return instrument_.Continue(execution, until);
  }
  void InputOverrun() {
    const std::lock_guard turn(queue_);
    instrument_.InputOverrun();
  }
  void ReplaceSignal(Signal signal) {
    const std::lock_guard turn(queue_);
    instrument_.ReplaceSignal(std::move(signal));
  }

 private:
  // A lock that is given in the order of asking. With an ordinary one a thread that has work without end
  // takes it again before another has woken up.
  class Queue {
   public:
    void lock() {
      std::unique_lock lock(mutex_);
      const std::uint64_t ticket = next_++;
      called_.wait(lock, [&] { return ticket == serving_; });
    }
    void unlock() {
      {
        const std::lock_guard lock(mutex_);
        ++serving_;
      }
      called_.notify_all();
    }

   private:
    std::mutex mutex_;
    std::condition_variable called_;
    std::uint64_t next_ = 0;
    std::uint64_t serving_ = 0;
  };

  Queue queue_;
  Instrument instrument_;
};

}  // namespace simulator

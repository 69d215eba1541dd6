// The simulated instrument: command lines in, replies out.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "simulator/configuration.h"

namespace simulator {

/// One instrument. Not safe for several threads at once: who serves it to several takes care of that.
class Instrument {
 public:
  /// `now_seconds` is the clock, real or simulated; it never goes backwards. Settle times, bit error windows
  /// and alarm statistics count in its time.
  Instrument(Configuration configuration, std::function<double()> now_seconds);
  ~Instrument();
  Instrument(const Instrument&) = delete;
  Instrument& operator=(const Instrument&) = delete;

  struct Answer {
    bool has_reply = false;
    std::string bytes;  ///< without terminator: a text or a definite-length block
  };

  /// Executes one command line without its terminator; commands are separated by ";" and the replies of
  /// several queries joined by ";". Errors go to the error queue. A reply above 256 KiB is dropped with error
  /// -430.
  Answer Execute(std::string_view line);
  /// The same into an answer whose memory is used again.
  void Execute(std::string_view line, Answer& answer);
  /// Records that a line was dropped because it was longer than the input buffer (error -363).
  void InputOverrun();

  /// Gives the instrument another signal, as a changed transmitter or channel would.
  void ReplaceSignal(Signal signal);

 private:
  class Interpreter;
  std::unique_ptr<Interpreter> interpreter_;
};

}  // namespace simulator

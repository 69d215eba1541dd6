// The simulated instrument: command lines in, replies out.
#pragma once

#include <chrono>
#include <cstddef>
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

  /// A command line on its way.
  struct Execution {
    std::string_view rest;     ///< the commands that are left; their text is the caller's
    int path = 0;              ///< below which the next header is looked for first
    std::size_t executed = 0;  ///< commands
    Answer answer;             ///< complete when the line is
  };
  /// Commands of a line that are executed together whatever they take.
  static constexpr std::size_t kCommandsTogether = 8;
  /// Puts a line into `execution`, whose memory is used again.
  static void Begin(std::string_view line, Execution& execution);
  /// Executes the line's first kCommandsTogether commands, or after a pause at least one, and goes on until
  /// the line is at its end or `until` has passed. True at the end of the line, where the answer is the one
  /// that Execute() gives.
  bool Continue(Execution& execution, std::chrono::steady_clock::time_point until);

  /// Records that a line was dropped because it was longer than the input buffer (error -363).
  void InputOverrun();

  /// Gives the instrument another signal, as a changed transmitter or channel would.
  void ReplaceSignal(Signal signal);

 private:
  class Interpreter;
  std::unique_ptr<Interpreter> interpreter_;
};

}  // namespace simulator

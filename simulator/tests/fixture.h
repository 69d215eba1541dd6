// An instrument in process on a simulated clock, for the tests.
#pragma once

#include <gtest/gtest.h>

#include <charconv>
#include <chrono>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "simulator/instrument.h"

namespace simulator {

inline constexpr std::string_view kNoReply = "(no reply)";
inline constexpr std::string_view kNoError = "0,\"No error\"";

/// The number at the start of a reply, after a status word of its own; fails the test when there is none.
inline double NumberIn(std::string_view reply) {
  while (!reply.empty() && (reply.front() == '<' || reply.front() == '>')) reply.remove_prefix(1);
  double value = 0.0;
  const auto read = std::from_chars(reply.data(), reply.data() + reply.size(), value);
  EXPECT_EQ(read.ec, std::errc()) << "no number in \"" << reply << "\"";
  return value;
}

inline std::vector<std::string> Fields(std::string_view text) {
  std::vector<std::string> fields(1);
  for (const char c : text) {
    if (c == ',') {
      fields.emplace_back();
    } else {
      fields.back().push_back(c);
    }
  }
  return fields;
}

class Bench {
 public:
  explicit Bench(Configuration configuration = {})
      : instrument_(std::move(configuration), [this] { return now_; }) {}
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;

  std::string Ask(std::string_view line) {
    const Instrument::Answer answer = instrument_.Execute(line);
    return answer.has_reply ? answer.bytes : std::string(kNoReply);
  }
  /// The same for a line that pauses wherever it may, and how many pieces that made.
  std::string AskInPieces(std::string_view line, int* pieces = nullptr) {
    Instrument::Execution execution;
    Instrument::Begin(line, execution);
    int count = 1;
    while (!instrument_.Continue(execution, std::chrono::steady_clock::time_point::min())) ++count;
    if (pieces != nullptr) *pieces = count;
    return execution.answer.has_reply ? execution.answer.bytes : std::string(kNoReply);
  }
  double Number(std::string_view query) { return NumberIn(Ask(query)); }
  std::string Error() { return Ask("SYST:ERR?"); }
  void Wait(double seconds) { now_ += seconds; }
  /// Selects a measurement mode and waits until its results are there.
  void Enter(std::string_view mode) {
    Ask("SENS:ATSC:MEAS " + std::string(mode));
    Wait(30.0);
  }
  Instrument& Box() { return instrument_; }

 private:
  double now_ = 0.0;
  Instrument instrument_;
};

}  // namespace simulator

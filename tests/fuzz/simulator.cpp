// The command parser of the simulated instrument: any lines, any time between them.
#include <chrono>
#include <string_view>

#include "simulator/instrument.h"
#include "tests/fuzz/input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  double now = 0;
  simulator::Configuration configuration;
  configuration.clock_start = 0;
  simulator::Instrument instrument(configuration, [&now] { return now; });
  simulator::Instrument::Answer answer;
  // The same lines with a pause wherever one may be.
  simulator::Instrument in_pieces(configuration, [&now] { return now; });
  simulator::Instrument::Execution execution;
  std::string_view rest = fuzz::Text(data, size);
  for (int lines = 0; !rest.empty() && lines < 64; ++lines) {
    const std::string_view line = fuzz::TakeLine(rest);
    instrument.Execute(line, answer);
    fuzz::Require(answer.bytes.size() <= 256 * 1024, "a reply has its greatest size");
    simulator::Instrument::Begin(line, execution);
    while (!in_pieces.Continue(execution, std::chrono::steady_clock::time_point::min())) {
    }
    fuzz::Require(execution.answer.has_reply == answer.has_reply && execution.answer.bytes == answer.bytes,
                  "a line in pieces is the same line");
    now += 0.5;
  }
  int entries = 0;
  do {
    instrument.Execute("SYST:ERR?", answer);
    fuzz::Require(answer.has_reply, "the error queue always answers");
  } while (answer.bytes != "0,\"No error\"" && ++entries < 1000);
  fuzz::Require(entries < 1000, "the error queue gets empty");
  return 0;
}

// The command parser of the simulated instrument: any lines, any time between them.
#include "simulator/instrument.h"
#include "tests/fuzz/input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  double now = 0;
  simulator::Instrument instrument({}, [&now] { return now; });
  simulator::Instrument::Answer answer;
  std::string_view rest = fuzz::Text(data, size);
  for (int lines = 0; !rest.empty() && lines < 64; ++lines) {
    instrument.Execute(fuzz::TakeLine(rest), answer);
    fuzz::Require(answer.bytes.size() <= 256 * 1024, "a reply has its greatest size");
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

// The instrument in process, on a simulated clock.
#include "simulator/instrument.h"

#include <gtest/gtest.h>

namespace simulator {
namespace {

class InstrumentTest : public testing::Test {
 protected:
  std::string Ask(std::string_view line) {
    const Instrument::Answer answer = instrument_.Execute(line);
    return answer.has_reply ? answer.bytes : "(no reply)";
  }

  double now_ = 0.0;
  Instrument instrument_{Configuration(), [this] { return now_; }};
};

TEST_F(InstrumentTest, IdentifiesItself) { EXPECT_EQ(Ask("*IDN?"), "HALVERN&TOSKE,KEL 40,100123,5.10"); }

TEST_F(InstrumentTest, StartsWithAnEmptyErrorQueue) { EXPECT_EQ(Ask("SYST:ERR?"), "0,\"No error\""); }

TEST_F(InstrumentTest, ReadsMerInTheNormalModeAndNotInTheSpectrumMode) {
  EXPECT_NE(Ask("READ:ATSC:MER:RMS?"), "---");
  Ask("SENS:ATSC:MEAS SP_1");
  now_ += 20.0;
  EXPECT_EQ(Ask("READ:ATSC:MER:RMS?"), "---");
}

}  // namespace
}  // namespace simulator

// A trace that a host program made: written by the workbench, read here, and run again by replay.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "apps/kel4x/trace_file.h"
#include "apps/kel4x/verbs.h"
#include "driver/clsKEL4x.h"
#include "host/host.h"
#include "workbench/workbench.h"

namespace kel4x {
namespace {

using Direction = TraceEvent::Direction;

class HostTrace : public testing::Test {
 protected:
  // A host program: one driver on the front panel's instrument, one reading, off line.
  HostTrace() {
    workbench::Options options;
    options.virtual_clock = true;
    options.trace_file =
        std::filesystem::temp_directory_path() /
        ("kel4x_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) +
         "_%p.ndjson");
    options.trace_header.program = "a host";
    workbench::Workbench bench(options);
    file_ = bench.Trace()->File();
    host::Host* const before = host::SetCurrentHost(&bench);
    {
      qkel4x::clsKEL4x driver;
      driver.Settings()->Item("Remote Control")->SetValue(std::string("QPort.clsGUI"), -1, -1);
      driver.OnLine(true);
      driver.MeasureRfLevel();
      driver.OnLine(false);
    }
    host::SetCurrentHost(before);
  }
  ~HostTrace() override { std::filesystem::remove(file_); }

  ExitCode ReplayLine(const std::vector<std::string>& line) const {
    kel4x::Run run;
    run.line = line;
    run.arguments = ParseArguments(line).value();
    return Replay(run);
  }

  std::filesystem::path file_;
};

TEST_F(HostTrace, IsReadWithProgramClassAndSettings) {
  const Trace trace = ReadTrace(file_);
  EXPECT_EQ(trace.header.program, "a host");
  EXPECT_FALSE(trace.header.version.empty());
  EXPECT_TRUE(trace.header.command.empty());
  const auto opened = std::ranges::find_if(trace.events, [](const TraceEvent& event) {
    return event.direction == Direction::kOpened && event.port_class == "QPort.clsGUI";
  });
  ASSERT_NE(opened, trace.events.end());
  EXPECT_EQ(opened->settings, (workbench::SettingTexts{{"GUI.Instrument", "SIM"}}));
  const auto query = std::ranges::find(trace.events, "READ:RF:LEVEL?", &TraceEvent::bytes);
  ASSERT_NE(query, trace.events.end());
  EXPECT_EQ((query + 1)->direction, Direction::kReceived);
  EXPECT_EQ((query + 1)->port, query->port);
}

TEST_F(HostTrace, HoldsNoCommandAndReplaySaysSo) {
  try {
    ReplayLine({"replay", file_.string()});
    FAIL() << "something was replayed";
  } catch (const UsageError& error) {
    const std::string text = error.what();
    EXPECT_NE(text.find("was recorded by a host and holds no command line"), std::string::npos) << text;
    EXPECT_NE(text.find("-- get MeasureRfLevel"), std::string::npos) << text;
  }
}

TEST_F(HostTrace, RunsAgainUnderAGivenCommand) {
  EXPECT_EQ(ReplayLine({"replay", file_.string(), "--", "get", "MeasureRfLevel"}), kDone);
  EXPECT_EQ(ReplayLine({"replay", file_.string(), "--", "get", "MeasureVsbMerRmsDb"}), kRefused);
}

TEST_F(HostTrace, WithoutATransferIsNothingToReplay) {
  std::ofstream(file_) << "{\"trace\":\"kel4x\",\"format\":1}\n";
  EXPECT_THROW(ReplayLine({"replay", file_.string(), "--", "get", "Mode"}), UsageError);
  std::ofstream(file_) << "{\"trace\":\"kel4x\",\"format\":1}\n"
                          "{\"direction\":\"sent\",\"port\":\"x\",\"text\":\"SYST:REM\"}\n";
  EXPECT_THROW(ReplayLine({"replay", file_.string(), "--", "get", "Mode"}), UsageError);
}

}  // namespace
}  // namespace kel4x

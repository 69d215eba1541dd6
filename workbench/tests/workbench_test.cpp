// The workbench as a host: classes by name, the clock, the log, the errors.
#include "workbench/workbench.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "host/automation_error.h"

namespace workbench {
namespace {

using std::chrono::steady_clock;

double Seconds(steady_clock::duration duration) { return std::chrono::duration<double>(duration).count(); }

TEST(WorkbenchTest, OffersTheFourPortsInAnyLetterCase) {
  Workbench host;
  EXPECT_EQ(host.CreateTransport("QPort.clsGPIB")->Settings()->Name(), "GPIB");
  EXPECT_EQ(host.CreateTransport("qport.CLSCOMM")->Settings()->Name(), "RS232");
  EXPECT_EQ(host.CreateTransport("QPORT.CLSETHERNET")->Settings()->Name(), "TCP/IP");
  EXPECT_EQ(host.CreateTransport("qport.clsgui")->Settings()->Name(), "GUI");
}

TEST(WorkbenchTest, UnknownClassIsRefusedWithTheKnownOnes) {
  Workbench host;
  try {
    host.CreateTransport("QPort.clsUSB");
    FAIL() << "an unknown class was created";
  } catch (const host::AutomationError& error) {
    EXPECT_EQ(error.Number(), 429);
    EXPECT_EQ(error.Description(),
              "There is no transport class \"QPort.clsUSB\"; there is QPort.clsComm, QPort.clsEthernet, "
              "QPort.clsGPIB, QPort.clsGUI");
  }
}

TEST(WorkbenchTest, ClassesCanBeReplacedAndPutBack) {
  Workbench host;
  auto before =
      host.RegisterTransport("qport.clsGUI", [&host] { return host.CreateTransport("QPort.clsGPIB"); });
  EXPECT_EQ(host.CreateTransport("QPort.clsGUI")->Settings()->Name(), "GPIB");
  host.RegisterTransport("QPort.clsGUI", std::move(before));
  EXPECT_EQ(host.CreateTransport("QPort.clsGUI")->Settings()->Name(), "GUI");
  EXPECT_TRUE(host.UnregisterTransport("QPort.clsGUI"));
  EXPECT_FALSE(host.UnregisterTransport("QPort.clsGUI"));
  EXPECT_THROW(host.CreateTransport("QPort.clsGUI"), host::AutomationError);
}

TEST(RuntimeTest, VirtualWaitMovesTheClockAndTakesNoTime) {
  Runtime runtime(Runtime::Clock::kVirtual);
  const auto begin = steady_clock::now();
  runtime.Wait(15.0F);
  runtime.Wait(0.5F);
  runtime.Wait(-1.0F);
  EXPECT_DOUBLE_EQ(runtime.Now(), 15.5);
  EXPECT_LT(Seconds(steady_clock::now() - begin), 1.0);
}

TEST(RuntimeTest, RealWaitTakesItsTime) {
  Runtime runtime(Runtime::Clock::kReal);
  const auto begin = steady_clock::now();
  runtime.Wait(0.05F);
  EXPECT_GE(Seconds(steady_clock::now() - begin), 0.05);
}

TEST(RuntimeTest, InterruptEndsAWaitOfAnotherThread) {
  Runtime runtime(Runtime::Clock::kReal);
  std::thread other([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    runtime.Interrupt();
  });
  const auto begin = steady_clock::now();
  try {
    runtime.Wait(15.0F);
    ADD_FAILURE() << "the wait was not interrupted";
  } catch (const host::AutomationError& error) {
    EXPECT_EQ(error.Code(), 2010);
    EXPECT_TRUE(error.Description().starts_with("The host interrupted a wait of 15 s after 0.0"))
        << error.Description();
  }
  EXPECT_LT(Seconds(steady_clock::now() - begin), 0.13);
  other.join();
  EXPECT_THROW(runtime.Wait(0.0F), host::AutomationError);
  runtime.ClearInterrupt();
  EXPECT_NO_THROW(runtime.Wait(0.0F));
}

TEST(ErrorReporterTest, RaisesAndKeepsTheLastErrors) {
  ErrorReporter errors;
  for (int i = 0; i < 70; ++i) {
    EXPECT_THROW(errors.Raise(i, "source", "text"), host::AutomationError);
  }
  const auto recorded = errors.Recorded();
  ASSERT_EQ(recorded.size(), 64U);
  EXPECT_EQ(recorded.front().number, 6);
  EXPECT_EQ(recorded.back().number, 69);
  EXPECT_EQ(recorded.back().source, "source");
  EXPECT_EQ(recorded.back().description, "text");
}

TEST(ErrorReporterTest, SilencedThreadStillFailsButKeepsNothing) {
  ErrorReporter errors;
  errors.ReportingEnabled(false);
  EXPECT_FALSE(errors.ReportingEnabled());
  EXPECT_THROW(errors.Raise(1, "a", "silent"), host::AutomationError);
  std::thread([&] {
    EXPECT_TRUE(errors.ReportingEnabled());
    EXPECT_THROW(errors.Raise(2, "b", "heard"), host::AutomationError);
  }).join();
  errors.ReportingEnabled(true);
  ASSERT_EQ(errors.Recorded().size(), 1U);
  EXPECT_EQ(errors.Recorded()[0].number, 2);
}

TEST(MessageLogTest, LinesNameTimeSourceAndDirection) {
  MessageLog log;
  std::vector<std::string> lines;
  log.AddSink([&](const LogMessage& message, std::string_view line) {
    EXPECT_EQ(line[10], 'T');
    EXPECT_EQ(line.substr(26, 2), "Z ");
    EXPECT_LE(message.time, std::chrono::system_clock::now());
    lines.emplace_back(line.substr(28));
  });
  log.Append(6, "KEL", "READ:RF:LEVEL?", "");
  log.Append(5, "KEL", "", "\"-23.4\"\x01");
  log.Append(4, "HOST", "text", "detail");
  EXPECT_EQ(lines, (std::vector<std::string>{"KEL > READ:RF:LEVEL?\n", "KEL < \\\"-23.4\\\"\\x01\n",
                                             "HOST [4] text detail\n"}));
}

TEST(MessageLogTest, KindsAreSwitchedOneByOneAndSinksCanGo) {
  MessageLog log;
  int count = 0;
  const int sink = log.AddSink([&](const LogMessage&, std::string_view) { ++count; });
  log.KindEnabled(5, false);
  log.Append(5, "KEL", "", "x");
  log.Append(6, "KEL", "x", "");
  EXPECT_EQ(count, 1);
  log.KindEnabled(5, true);
  log.Append(5, "KEL", "", "x");
  EXPECT_EQ(count, 2);
  log.RemoveSink(sink);
  log.Append(5, "KEL", "", "x");
  EXPECT_EQ(count, 2);
}

TEST(MessageLogTest, FailingSinksAndFullDisksLoseLinesOnly) {
  MessageLog log;
  log.AddSink([](const LogMessage&, std::string_view) { throw std::runtime_error("sink"); });
#ifdef __linux__
  log.AddSink(FileSink("/dev/full"));
#endif
  for (int i = 0; i < 5000; ++i) EXPECT_NO_THROW(log.Append(6, "KEL", "READ:RF:LEVEL?", ""));
}

TEST(MessageLogTest, FileThatCannotBeOpenedIsAnError) {
  try {
    FileSink("/nonexistent/folder/log.txt");
    FAIL() << "the file was opened";
  } catch (const host::AutomationError& error) {
    EXPECT_EQ(error.Number(), 75);
    EXPECT_NE(error.Description().find("/nonexistent/folder/log.txt"), std::string::npos);
  }
}

}  // namespace
}  // namespace workbench

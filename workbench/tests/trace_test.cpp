// Traces: what a line holds, when it is written, and what a writing that fails does.
#include <gtest/gtest.h>

#include "workbench/trace_writer.h"

#ifndef _WIN32
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "host/automation_error.h"
#include "workbench/encoding.h"
#include "workbench/workbench.h"

namespace workbench {
namespace {

using Kind = TransferRecord::Kind;

std::chrono::system_clock::time_point At(std::int64_t micros) {
  using namespace std::chrono;
  return sys_days(2026y / March / 1) + hours(12) + microseconds(micros);
}

TransferRecord Exchange(std::string_view sent, std::string_view received, std::int64_t begin = 250) {
  TransferRecord record;
  record.kind = Kind::kExchange;
  record.port = "QPort.clsEthernet";
  record.peer = "127.0.0.1:5025";
  record.sent = sent;
  record.received = received;
  record.begin = At(begin);
  record.seconds = 0.0015;
  return record;
}

class TraceWriterTest : public testing::Test {
 protected:
  TraceWriterTest()
      : file_(std::filesystem::temp_directory_path() /
              ("qkel4x_trace_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) +
               "_%p.ndjson")) {}
  ~TraceWriterTest() override {
    std::error_code ignored;
    std::filesystem::remove(written_, ignored);
  }

  std::shared_ptr<TraceWriter> Open(const TraceHeader& header = {}) {
    auto trace = TraceWriter::Open(file_, header);
    written_ = trace->File();
    return trace;
  }

  std::vector<std::string> Lines() const {
    std::ifstream in(written_, std::ios::binary);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
  }

  std::filesystem::path file_;
  std::filesystem::path written_;
};

TEST_F(TraceWriterTest, HeaderNamesProgramVersionCommandAndSettings) {
  Open({.program = "bench \"3\"",
        .version = "2.1",
        .command = {"get", "a\\b\n"},
        .resource = "SIM",
        .settings = {{"RS232.Baud Rate", "9600"}, {"Name", "\xC3\xA4\xFF"}}});
  const std::string line = Lines().at(0);
  EXPECT_TRUE(line.starts_with(R"({"trace":"kel4x","format":1,"program":"bench \"3\"","version":"2.1",)"
                               R"("command":["get","a\\b\u000a"],"resource":"SIM","started":"20)"))
      << line;
  EXPECT_NE(line.find("\"settings\":{\"RS232.Baud Rate\":\"9600\",\"Name\":\"\xC3\xA4\xEF\xBF\xBD\"},"
                      "\"secrets\":\"none: "),
            std::string::npos)
      << line;
}

TEST_F(TraceWriterTest, HeaderOfAHostHasNoCommandAndTheVersionOfTheWorkbench) {
  Open();
  const std::string line = Lines().at(0);
  EXPECT_EQ(line.find("command"), line.find("command line, the settings"));
  EXPECT_EQ(line.find("\"resource\""), std::string::npos);
  EXPECT_NE(line.find("\"version\":\"" QKEL4X_VERSION "\""), std::string::npos);
}

TEST_F(TraceWriterTest, ExchangeIsTwoLinesWithTimeDirectionPortTextAndDuration) {
  Open()->Observe(Exchange("SYST:ERR?", "0,\"No error\""));
  EXPECT_EQ(Lines().at(1),
            R"({"time":"2026-03-01T12:00:00.000250Z","direction":"sent","port":"127.0.0.1:5025",)"
            R"("text":"SYST:ERR?"})");
  EXPECT_EQ(Lines().at(2),
            R"({"time":"2026-03-01T12:00:00.001750Z","direction":"received","port":"127.0.0.1:5025",)"
            R"("text":"0,\"No error\"","duration":0.001500})");
}

TEST_F(TraceWriterTest, TimesCrossSecondsAndMidnight) {
  const auto trace = Open();
  TransferRecord record = Exchange("A", "B", 999'999);
  trace->Observe(record);
  record.begin = At(12LL * 3600 * 1'000'000 - 1);
  record.seconds = 1.000001;
  trace->Observe(record);
  trace->Flush();
  EXPECT_NE(Lines().at(1).find("12:00:00.999999Z"), std::string::npos);
  EXPECT_NE(Lines().at(2).find("12:00:01.001499Z"), std::string::npos);
  EXPECT_NE(Lines().at(3).find("2026-03-01T23:59:59.999999Z"), std::string::npos);
  EXPECT_NE(Lines().at(4).find("2026-03-02T00:00:01.000000Z"), std::string::npos);
  EXPECT_NE(Lines().at(4).find("\"duration\":1.000001}"), std::string::npos);
}

TEST_F(TraceWriterTest, BytesThatAreNoPlainTextAndBlocksAreBase64) {
  const auto trace = Open();
  trace->Observe(Exchange("A\x01", std::string_view("\0\xFF", 2)));
  TransferRecord block = Exchange("HCOP?", "#15hello");
  block.kind = Kind::kBlock;
  trace->Observe(block);
  trace->Flush();
  EXPECT_NE(Lines().at(1).find(R"(,"bytes":"QQE="})"), std::string::npos);
  EXPECT_NE(Lines().at(2).find(R"(,"bytes":"AP8=","duration")"), std::string::npos);
  EXPECT_NE(Lines().at(4).find(R"(,"bytes":"IzE1aGVsbG8=","block":true,"duration")"), std::string::npos);
}

TEST_F(TraceWriterTest, ErrorsAreWrittenAtOnceWithNumberAndText) {
  const auto trace = Open();
  TransferRecord record = Exchange("READ?", "");
  record.error_number = -2147219443;
  record.error = "no reply within 5 s \"\xE2\x82\xAC\" \xED\xA0\x80";
  trace->Observe(record);
  EXPECT_TRUE(
      Lines().at(2).ends_with("\"duration\":0.001500,\"number\":-2147219443,\"error\":"
                              "\"no reply within 5 s \\\"\xE2\x82\xAC\\\" "
                              "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\"}"))
      << Lines().at(2);
}

TEST_F(TraceWriterTest, OpeningHasItsClassAndSettings) {
  const auto trace = Open();
  TransferRecord record = Exchange("", "");
  record.kind = Kind::kOpened;
  const SettingTexts settings{{"TCP/IP.Host", "127.0.0.1"}, {"TCP/IP.Port", "5025"}};
  record.settings = settings;
  trace->Observe(record);
  trace->Flush();
  EXPECT_TRUE(Lines().at(1).ends_with(R"("direction":"opened","port":"127.0.0.1:5025",)"
                                      R"("class":"QPort.clsEthernet","settings":{"TCP/IP.Host":"127.0.0.1",)"
                                      R"("TCP/IP.Port":"5025"},"duration":0.001500})"));
}

TEST_F(TraceWriterTest, LinesAreKeptBackForAQuarterOfASecond) {
  const auto trace = Open();
  const auto now = std::chrono::system_clock::now();
  TransferRecord record = Exchange("A", "B");
  record.begin = now;
  trace->Observe(record);
  EXPECT_EQ(Lines().size(), 1U);
  record.begin = now + std::chrono::seconds(1);
  trace->Observe(record);
  EXPECT_EQ(Lines().size(), 5U);
  trace->Observe(record);
  EXPECT_EQ(Lines().size(), 5U);
  record.kind = Kind::kClosed;
  record.sent = record.received = {};
  trace->Observe(record);
  EXPECT_EQ(Lines().size(), 8U);
  // A clock that was put back does not hold lines for long.
  record.kind = Kind::kCleared;
  record.begin = now - std::chrono::hours(1);
  trace->Observe(record);
  EXPECT_EQ(Lines().size(), 9U);
}

TEST_F(TraceWriterTest, LinesOfThreadsAreWhole) {
  constexpr int kThreads = 4;
  constexpr int kEach = 3000;
  {
    const auto trace = Open();
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([&trace, t] {
        const std::string text(static_cast<std::size_t>(10 + 30 * t), static_cast<char>('a' + t));
        TransferRecord record = Exchange(text, "1");
        for (int i = 0; i < kEach; ++i) {
          record.begin = std::chrono::system_clock::now();
          trace->Observe(record);
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
  }
  const auto lines = Lines();
  ASSERT_EQ(lines.size(), 1U + 2U * kThreads * kEach);
  for (std::size_t i = 1; i < lines.size(); i += 2) {
    const std::string& sent = lines[i];
    const std::size_t at = sent.find("\"text\":\"");
    ASSERT_NE(at, std::string::npos) << sent;
    const std::string text = sent.substr(at + 8, sent.size() - at - 10);
    const auto expected = static_cast<std::size_t>(10 + 30 * (text.at(0) - 'a'));
    ASSERT_EQ(text, std::string(expected, text[0])) << sent;
    ASSERT_TRUE(lines[i + 1].find("\"received\"") != std::string::npos && lines[i + 1].ends_with("}"));
  }
}

TEST_F(TraceWriterTest, ALongLineIsWholeToo) {
  const std::string text(500'000, 'x');
  Open()->Observe(Exchange("A", text));
  ASSERT_EQ(Lines().size(), 3U);
  EXPECT_NE(Lines().at(2).find("\"" + text + "\""), std::string::npos);
}

TEST_F(TraceWriterTest, TheSameFileIsTheSameTraceWithinAProcess) {
  const auto first = Open();
  EXPECT_EQ(Open(), first);
  first->Observe(Exchange("A", "B"));
  first->Flush();
  EXPECT_EQ(Open(), first);
  EXPECT_EQ(Lines().size(), 3U);
}

TEST_F(TraceWriterTest, ANewTraceBeginsAnEmptyFile) {
  Open()->Observe(Exchange("A", "B"));
  EXPECT_EQ(Lines().size(), 3U);
  Open();
  EXPECT_EQ(Lines().size(), 1U);
}

TEST_F(TraceWriterTest, NameCarriesTheProcess) {
  Open();
  EXPECT_EQ(written_.string().find("%p"), std::string::npos);
#ifndef _WIN32
  EXPECT_NE(written_.string().find("_" + std::to_string(::getpid()) + ".ndjson"), std::string::npos);
#endif
}

TEST_F(TraceWriterTest, AFileThatCannotBeOpenedIsAnError) {
  Options options;
  options.trace_file = "/nonexistent/folder/t.ndjson";
  try {
    Workbench host(options);
    FAIL() << "the file was opened";
  } catch (const host::AutomationError& error) {
    EXPECT_EQ(error.Number(), 75);
    EXPECT_NE(error.Description().find("/nonexistent/folder/t.ndjson"), std::string::npos);
  }
}

#ifdef __linux__

TEST_F(TraceWriterTest, AnotherProcessIsRefusedTheFileAndDoesNotGarbleIt) {
  const auto trace = Open();
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    try {
      TraceWriter::Open(written_, {});
      ::_exit(1);
    } catch (const host::AutomationError& error) {
      ::_exit(error.Number() == 75 && error.Description().find("%p") != std::string::npos ? 0 : 2);
    }
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  trace->Observe(Exchange("A", "B"));
  trace->Flush();
  EXPECT_EQ(Lines().size(), 3U);
}

TEST_F(TraceWriterTest, AForkedChildDoesNotWriteAgainWhatItsParentKeepsBack) {
  const auto trace = Open();
  TransferRecord record = Exchange("A", "B");
  record.begin = std::chrono::system_clock::now();
  trace->Observe(record);
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    trace->Observe(record);
    trace->Flush();
    ::_exit(trace->HasLost() ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(Lines().size(), 1U);
  trace->Flush();
  EXPECT_EQ(Lines().size(), 3U);
}

TEST_F(TraceWriterTest, WhatIsKeptBackIsWrittenWhenTheProcessEndsInOrder) {
  const auto moved = std::filesystem::temp_directory_path() / ("qkel4x_ended_" + std::to_string(::getpid()));
  EXPECT_EXIT(
      {
        // As a host does that never destroys its workbench.
        static auto* const kept =
            new std::shared_ptr<TraceWriter>(TraceWriter::Open(file_.string() + ".exit", {}));
        TransferRecord record = Exchange("A", "B");
        record.begin = std::chrono::system_clock::now();
        (*kept)->Observe(record);
        std::filesystem::rename((*kept)->File(), moved);
        std::exit(0);
      },
      testing::ExitedWithCode(0), "");
  written_ = moved;
  EXPECT_EQ(Lines().size(), 3U);
}

TEST_F(TraceWriterTest, AFullDiskFailsNoTransferAndSaysWhy) {
  Options options;
  options.virtual_clock = true;
  options.trace_file = "/dev/full";
  Workbench host(options);
  int told = 0;
  std::string told_text;
  host.Log().AddSink([&](const LogMessage&, std::string_view line) {
    ++told;
    told_text = line;
  });
  const auto port = host.CreateTransport("QPort.clsGUI");
  port->OnLine(true);
  for (int i = 0; i < 2000; ++i) EXPECT_EQ(port->Query("SYST:MODE?"), "ATSC");
  port->OnLine(false);
  EXPECT_EQ(host.Trace()->Lost(), "No space left on device");
  EXPECT_EQ(told, 1);
  EXPECT_NE(told_text.find("/dev/full is not complete"), std::string::npos) << told_text;
  EXPECT_NE(told_text.find("No space left on device"), std::string::npos) << told_text;
}

TEST_F(TraceWriterTest, ATraceThatEndsEarlyEndsWithAWholeLine) {
  ::signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  const auto trace = Open();
  rlimit small = before;
  small.rlim_cur = 1000;
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  for (int i = 0; i < 20; ++i) trace->Observe(Exchange("SYST:ERR?", "0,\"No error\"", 300'000LL * i));
  trace->Flush();
  ::setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(trace->Lost(), "File too large");
  std::ifstream in(written_, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(in), {}};
  EXPECT_TRUE(text.ends_with("}\n"));
  EXPECT_LE(text.size(), 1000U);
  EXPECT_GT(text.size(), 500U);
}

#endif

TEST_F(TraceWriterTest, AWorkbenchShowsEachTransferToItsTraceAndToTheUsersObserver) {
  struct Counting : TransferObserver {
    void Observe(const TransferRecord&) noexcept override { ++count; }
    int count = 0;
  } counting;
  Options options;
  options.virtual_clock = true;
  options.trace_file = file_;
  options.trace_header.program = "a test";
  {
    Workbench host(options);
    written_ = host.Trace()->File();
    const auto port = host.CreateTransport("QPort.clsGUI");
    host.Observe(&counting);
    port->OnLine(true);
    EXPECT_EQ(port->Query("SYST:MODE?"), "ATSC");
    host.Observe(nullptr);
    port->OnLine(false);
  }
  EXPECT_EQ(counting.count, 2);
  const auto lines = Lines();
  ASSERT_EQ(lines.size(), 5U);
  EXPECT_NE(lines[0].find("\"program\":\"a test\""), std::string::npos);
  EXPECT_NE(lines[1].find(R"("class":"QPort.clsGUI","settings":{"GUI.Instrument":"SIM"})"),
            std::string::npos);
  EXPECT_NE(lines[2].find("\"text\":\"SYST:MODE?\""), std::string::npos);
  EXPECT_NE(lines[3].find("\"text\":\"ATSC\""), std::string::npos);
  EXPECT_NE(lines[4].find("\"direction\":\"closed\""), std::string::npos);
}

TEST_F(TraceWriterTest, APortMayOutliveTheTracingWorkbench) {
  std::shared_ptr<host::Transport> port;
  {
    Options options;
    options.trace_file = file_;
    Workbench host(options);
    written_ = host.Trace()->File();
    port = host.CreateTransport("QPort.clsGUI");
    port->OnLine(true);
  }
  EXPECT_EQ(port->Query("SYST:MODE?"), "ATSC");
  port.reset();
  EXPECT_GE(Lines().size(), 4U);
}

TEST_F(TraceWriterTest, WithoutATraceFileThereIsNone) {
  Workbench host;
  EXPECT_EQ(host.Trace(), nullptr);
}

}  // namespace
}  // namespace workbench

// Every fault on every bus: no hang, no wrong value, each with its error, and a port that is right again
// afterwards.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <ostream>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <tuple>
#include <vector>

#include "workbench/tests/ports/bench.h"

namespace workbench::test {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

constexpr float kTimeout = 0.3F;
constexpr int kMostErrors = 20;  // until a far end has said what it had to say

/// What a query may end with: a link error, or the very reply.
struct Expected {
  std::set<int> codes;  // 0: the reply
  std::string reply = "FAULT";
};

struct Fault {
  std::string name;
  void (*react)(Wire& wire);
  Expected usual;
  // Where a bus sees the fault differently: GPIB has an end mark, TCP has connections that end.
  std::vector<std::pair<Bus, Expected>> special;
};

const Expected kReply{{0}, "FAULT"};
const Expected kTimedOut{{2013}, ""};
const Expected kBadReply{{2012}, ""};
const Expected kLost{{2010}, ""};

void SendBytewise(Wire& wire, std::string_view bytes, std::chrono::milliseconds pause) {
  for (const char c : bytes) {
    wire.Send({&c, 1});
    wire.Pause(pause);
  }
}

// Pauses stay shorter than the time-out of an adapter's read, which would give up in between.
const std::vector<Fault>& Faults() {
  static const std::vector<Fault> faults = {
      {"None", [](Wire& wire) { wire.Send("FAULT\n"); }, kReply, {}},
      {"ReturnFeed", [](Wire& wire) { wire.Send("FAULT\r\n"); }, kReply, {}},
      {"FeedReturn", [](Wire& wire) { wire.Send("FAULT\n\r"); }, kReply, {}},
      {"Empty", [](Wire& wire) { wire.Send("\n"); }, {{0}, ""}, {}},
      {"Nul", [](Wire& wire) { wire.Send(std::string_view("FA\0ULT\n", 7)); }, kBadReply, {}},
      {"EightBit", [](Wire& wire) { wire.Send("FA\xd5LT\n"); }, kBadReply, {}},
      {"Stale", [](Wire& wire) { wire.Send("STALE\nFAULT\n"); }, kBadReply, {}},
      {"Bytewise", [](Wire& wire) { SendBytewise(wire, "FAULT\n", 10ms); }, kReply, {}},
      {"Trickle", [](Wire& wire) { SendBytewise(wire, "FAULT-FAULT\n", 60ms); }, kTimedOut, {}},
      {"Late", [](Wire& wire) { wire.Pause(450ms), wire.Send("FAULT\n"); }, kTimedOut, {}},
      {"Silent", [](Wire&) {}, kTimedOut, {}},
      {"Cut", [](Wire& wire) { wire.Send("FAU"); }, kTimedOut, {}},
      {"CutAndLate",
       [](Wire& wire) { wire.Send("FAU"), wire.Pause(400ms), wire.Send("LT\n"); },
       kTimedOut,
       {}},
      {"MarkInsteadOfTerminator",
       [](Wire& wire) { wire.SendAndMark("FAULT"); },
       kTimedOut,
       {{Bus::kLibrary, kReply}}},
      {"GarbageWithoutEnd",
       [](Wire& wire) { wire.Send(std::string_view("\x80\0\xfe#9+\x1b++\r\r;", 13)); },
       kTimedOut,
       {}},
      {"WrongTerminator", [](Wire& wire) { wire.Send("FAULT\r"); }, kTimedOut, {{Bus::kLibrary, kReply}}},
      {"Doubled", [](Wire& wire) { wire.Send("FAULT\nFAULT\n"); }, kReply, {}},
      {"DoubledLater",
       [](Wire& wire) { wire.Send("FAULT\n"), wire.Pause(20ms), wire.Send("FAULT\n"); },
       kReply,
       {}},
      {"DoubledInPart",
       [](Wire& wire) { wire.Send("FAULT\nFAU"), wire.Pause(20ms), wire.Send("LT\n"); },
       kReply,
       {}},
      {"Overlong",
       [](Wire& wire) { wire.Send(std::string(1100UL * 1024UL, 'x')); },
       kBadReply,
       // A pseudo-terminal and a bus in slices do not carry a mebibyte within the time-out for certain.
       {{Bus::kSerial, {{2012, 2013}, ""}},
        {Bus::kLibrary, {{2012, 2013}, ""}},
        {Bus::kAdapter, {{2012, 2013}, ""}},
        {Bus::kSerialAdapter, {{2012, 2013}, ""}}}},
      {"Closed",
       [](Wire& wire) { wire.Close(); },
       kTimedOut,
       {{Bus::kTcp, kLost}, {Bus::kFrontPanel, kLost}}},
      {"CutAndClosed",
       [](Wire& wire) { wire.Send("FAU"), wire.Pause(20ms), wire.Close(); },
       kTimedOut,
       {{Bus::kTcp, kBadReply}, {Bus::kFrontPanel, kBadReply}}},
      {"Reset", [](Wire& wire) { wire.Reset(); }, kTimedOut, {{Bus::kTcp, kLost}, {Bus::kFrontPanel, kLost}}},
      {"ReplyAndReset", [](Wire& wire) { wire.Send("FAULT\n"), wire.Pause(20ms), wire.Reset(); }, kReply, {}},
  };
  return faults;
}

std::string_view NumberOf(std::string_view line) { return line.substr(0, line.size() - 1); }

/// Asks until the instrument is back, and fails on any reply that answers something else.
void ExpectRightReplies(host::Transport& port) {
  int right = 0;
  int errors = 0;
  for (int i = 0; right < 3; ++i) {
    const std::string number = "CHECK" + std::to_string(i);
    try {
      if (!port.OnLine()) port.OnLine(true);
      EXPECT_EQ(port.Query(number + "?"), number);
      ++right;
    } catch (const host::AutomationError& error) {
      EXPECT_EQ(right, 0) << "the port failed again: " << error.Description();
      ASSERT_LT(++errors, kMostErrors) << error.Description();
    }
  }
}

class FaultMatrixTest : public testing::TestWithParam<std::tuple<Bus, std::size_t>> {
 protected:
  Bus bus_ = std::get<0>(GetParam());
  const Fault& fault_ = Faults()[std::get<1>(GetParam())];

  Expected ExpectedHere() const {
    for (const auto& [bus, expected] : fault_.special) {
      if (bus == bus_) return expected;
    }
    return fault_.usual;
  }
};

TEST_P(FaultMatrixTest, EndsInTimeAndNeverAnswersWithTheWrongReply) {
  Bench bench(bus_, [this](std::string_view line, Wire& wire) {
    if (line == "FAULT?") {
      fault_.react(wire);
    } else {
      wire.Send(std::string(NumberOf(line)) + "\n");
    }
  });
  bench.port->Timeout(kTimeout);
  EXPECT_EQ(bench.port->Query("BEFORE?"), "BEFORE");

  const Expected expected = ExpectedHere();
  const auto begin = steady_clock::now();
  try {
    EXPECT_EQ(bench.port->Query("FAULT?"), expected.reply);
    EXPECT_TRUE(expected.codes.contains(0)) << "a reply where an error was due";
    RecordProperty("outcome", "reply");
  } catch (const host::AutomationError& error) {
    EXPECT_TRUE(expected.codes.contains(error.Code())) << error.Number() << ' ' << error.Description();
    EXPECT_NE(error.Description().find("Sent: \"FAULT?\""), std::string::npos) << error.Description();
    RecordProperty("outcome", error.Code());
  }
  EXPECT_LT(SecondsSince(begin), static_cast<double>(kTimeout) + 0.05 + kSlack);

  if (expected.codes.contains(0)) std::this_thread::sleep_for(60ms);  // what comes unasked comes now
  ExpectRightReplies(*bench.port);
}

std::string CaseName(const testing::TestParamInfo<std::tuple<Bus, std::size_t>>& info) {
  return NameOf(std::get<0>(info.param)) + Faults()[std::get<1>(info.param)].name;
}

INSTANTIATE_TEST_SUITE_P(AllBuses, FaultMatrixTest,
                         testing::Combine(testing::ValuesIn(kBuses),
                                          testing::Range<std::size_t>(0, Faults().size())),
                         CaseName);

class BusTest : public testing::TestWithParam<Bus> {};

TEST_P(BusTest, ReplyHeldBackUntilTheNextQueryNeverAnswersIt) {
  std::atomic<bool> held{false};
  Bench bench(GetParam(), [&held](std::string_view line, Wire& wire) {
    if (line == "FAULT?") {
      held = true;
      return;
    }
    wire.Send((held.exchange(false) ? "FAULT\n" : "") + std::string(NumberOf(line)) + "\n");
  });
  bench.port->Timeout(kTimeout);
  EXPECT_EQ(ErrorOf([&] { bench.port->Query("FAULT?"); }).Code(), 2013);
  EXPECT_NE(ErrorOf([&] { bench.port->Query("SECOND?"); }).Number(), 0)
      << "which of two replies is meant is unknown";
  ExpectRightReplies(*bench.port);
}

TEST_P(BusTest, RepliesInReversedOrderNeverAnswerTheWrongQuery) {
  std::atomic<bool> held{false};
  Bench bench(GetParam(), [&held](std::string_view line, Wire& wire) {
    if (line == "FAULT?") {
      held = true;
      return;
    }
    wire.Send(std::string(NumberOf(line)) + "\n" + (held.exchange(false) ? "FAULT\n" : ""));
  });
  bench.port->Timeout(kTimeout);
  EXPECT_EQ(ErrorOf([&] { bench.port->Query("FAULT?"); }).Code(), 2013);
  EXPECT_NE(ErrorOf([&] { bench.port->Query("SECOND?"); }).Number(), 0)
      << "which of two replies is meant is unknown";
  ExpectRightReplies(*bench.port);
}

TEST_P(BusTest, ReplyThatComesLongAfterTheTimeoutIsGoneWhenTheNextQueryIsSent) {
  Bench bench(GetParam(), [](std::string_view line, Wire& wire) {
    if (line == "LATE?") wire.Pause(450ms);
    wire.Send(std::string(NumberOf(line)) + "\n");
  });
  bench.port->Timeout(kTimeout);
  EXPECT_EQ(ErrorOf([&] { bench.port->Query("LATE?"); }).Code(), 2013);
  std::this_thread::sleep_for(800ms);
  EXPECT_EQ(bench.port->Query("FIRST?"), "FIRST");
  EXPECT_EQ(bench.port->Query("SECOND?"), "SECOND");
}

TEST_P(BusTest, InterruptionEndsATransferAtOnceAndLeavesThePortClean) {
  Bench bench(GetParam(), [](std::string_view line, Wire& wire) {
    if (line == "SLOW?") wire.Pause(250ms);
    wire.Send(std::string(NumberOf(line)) + "\n");
  });
  bench.port->Timeout(5.0F);
  std::thread other([&] {
    std::this_thread::sleep_for(50ms);
    bench.host->Interrupt();
  });
  const auto begin = steady_clock::now();
  const auto error = ErrorOf([&] { bench.port->Query("SLOW?"); });
  EXPECT_LT(SecondsSince(begin), 0.05 + 0.1 + kSlack / 2);
  other.join();
  EXPECT_EQ(error.Code(), 2010);
  EXPECT_NE(error.Description().find("the host interrupted the transfer"), std::string::npos)
      << error.Description();
  EXPECT_EQ(ErrorOf([&] { bench.port->Write("X"); }).Code(), 2010);
  bench.host->ClearInterrupt();
  EXPECT_TRUE(bench.port->OnLine());
  std::string reply;
  for (int i = 0; i < 5 && reply.empty(); ++i) {
    try {
      bench.port->Exchange("NEXT?", &reply);
    } catch (const host::AutomationError& late) {
      EXPECT_EQ(late.Code(), 2012) << late.Description();
    }
  }
  EXPECT_EQ(reply, "NEXT");
}

TEST_P(BusTest, ErrorQueueThatNeverEmptiesCanBeLeft) {
  Bench bench(GetParam(), [](std::string_view, Wire& wire) { wire.Send("-113,\"Undefined header\"\n"); });
  std::thread other([&] {
    std::this_thread::sleep_for(50ms);
    bench.host->Interrupt();
  });
  const auto error = ErrorOf([&] {
    while (bench.port->Query("SYST:ERR?") != "0,\"No error\"") {
    }
  });
  other.join();
  EXPECT_EQ(error.Code(), 2010);
}

TEST_P(BusTest, BlocksAreReadInPiecesAndTheNextReplyIsRight) {
  std::string data(32000, '\0');
  for (std::size_t i = 0; i < data.size(); ++i) data[i] = static_cast<char>(i * 7);
  Bench bench(GetParam(), [&data](std::string_view line, Wire& wire) {
    if (line == "BLOCK?") {
      wire.Send("#532000" + data + "\n");
    } else {
      wire.Send(std::string(NumberOf(line)) + "\n");
    }
  });
  auto& blocks = *bench.port->Blocks();
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(blocks.ReadBlock(1, "BLOCK?"), std::vector<std::uint8_t>{'#'});
    EXPECT_EQ(blocks.ReadBlock(1, std::nullopt), std::vector<std::uint8_t>{'5'});
    EXPECT_EQ(blocks.ReadBlock(5, std::nullopt), (std::vector<std::uint8_t>{'3', '2', '0', '0', '0'}));
    EXPECT_EQ(blocks.ReadBlock(32000, std::nullopt), std::vector<std::uint8_t>(data.begin(), data.end()));
    EXPECT_EQ(bench.port->Query("AFTER?"), "AFTER");
  }
}

TEST_P(BusTest, BlockReadInPartOnlyNeverAnswersTheNextQuery) {
  Bench bench(GetParam(), [](std::string_view line, Wire& wire) {
    if (line == "BLOCK?") {
      wire.Send("#510000" + std::string(5000, '\n'));
      wire.Pause(100ms);
      wire.Send(std::string(5000, '\n') + "\n");
    } else {
      wire.Send(std::string(NumberOf(line)) + "\n");
    }
  });
  EXPECT_EQ(bench.port->Blocks()->ReadBlock(8, "BLOCK?").size(), 8U);
  EXPECT_EQ(bench.port->Query("AFTER?"), "AFTER");
  EXPECT_EQ(bench.port->Query("AGAIN?"), "AGAIN");
}

TEST_P(BusTest, BlockShorterOrLongerThanAnnouncedIsALinkError) {
  Bench bench(GetParam(), [](std::string_view line, Wire& wire) {
    if (line == "SHORT?") {
      wire.Send("#3100" + std::string(49, 'x') + "\n");
    } else if (line == "LONG?") {
      wire.Send("#210" + std::string(20, 'x') + "\n");
    } else {
      wire.Send(std::string(NumberOf(line)) + "\n");
    }
  });
  bench.port->Timeout(kTimeout);
  const auto error = ErrorOf([&] { bench.port->Blocks()->ReadBlock(105, "SHORT?"); });
  // Where the bus marks the end, it is known that no more will come.
  EXPECT_EQ(error.Code(), GetParam() == Bus::kLibrary ? 2012 : 2013) << error.Description();
  EXPECT_NE(error.Description().find("55 bytes came back"), std::string::npos) << error.Description();
  bench.port->Timeout(2.0F);
  EXPECT_EQ(bench.port->Query("AFTER?"), "AFTER");
  const auto longer = ErrorOf([&] { bench.port->Blocks()->ReadBlock(14, "LONG?"); });
  EXPECT_EQ(longer.Code(), 2012);
  EXPECT_NE(longer.Description().find("more came than the header of the block announces"), std::string::npos)
      << longer.Description();
  EXPECT_EQ(bench.port->Query("AGAIN?"), "AGAIN");
}

TEST_P(BusTest, PartOfAReplyIsCalledAPartWithItsBytes) {
  Bench bench(GetParam(), [](std::string_view, Wire& wire) { wire.Send("FAU"); });
  bench.port->Timeout(kTimeout);
  const auto error = ErrorOf([&] { bench.port->Query("FAULT?"); });
  EXPECT_EQ(error.Code(), 2013);
  const char* const says = GetParam() == Bus::kFrontPanel ? "only a part of the reply came, and no more will"
                                                          : "only a part of the reply came within 0.3 s";
  EXPECT_NE(error.Description().find(says), std::string::npos) << error.Description();
  EXPECT_NE(error.Description().find("3 bytes came back (\"FAU\")"), std::string::npos)
      << error.Description();
}

TEST_P(BusTest, CompleteBlockIsReadAlthoughNothingEndsIt) {
  Bench bench(GetParam(), [](std::string_view line, Wire& wire) {
    wire.Send(line == "BLOCK?" ? "#210xxxxxxxxxx" : std::string(NumberOf(line)) + "\n");
  });
  bench.port->Timeout(2.0F);
  const auto begin = steady_clock::now();
  EXPECT_EQ(bench.port->Blocks()->ReadBlock(14, "BLOCK?").size(), 14U);
  EXPECT_LT(SecondsSince(begin), 0.25 + 0.05 + kSlack) << "an end mark was waited for";
  EXPECT_EQ(bench.port->Query("AFTER?"), "AFTER");
  EXPECT_EQ(bench.port->Query("AGAIN?"), "AGAIN");
}

TEST_P(BusTest, WhatStandsBehindABlockNeverAnswersTheNextQuery) {
  // With and without the terminator of the block, shorter and longer than what is received along with it; a
  // block of 128 bytes ends where the first receive does.
  const std::vector<std::string> surplus = {"\n",
                                            "\r\n",
                                            "\n\n",
                                            "\nSTALE\n",
                                            "\nSTALE",
                                            "STALE\n",
                                            "\n" + std::string(62, 'x') + "\n",
                                            "\n" + std::string(300, 'x') + "\nSTALE\n",
                                            std::string(70000, 'x') + "\n"};
  const std::vector<std::string> headers = {"#210", "#3122", "#45000", "#532000"};
  std::mutex mutex;
  std::string reply;
  Bench bench(GetParam(), [&mutex, &reply](std::string_view line, Wire& wire) {
    const std::lock_guard lock(mutex);
    wire.SendAndMark(line == "BLOCK?" ? reply : std::string(NumberOf(line)) + "\n");
  });
  auto& blocks = *bench.port->Blocks();
  for (const std::string& header : headers) {
    const std::size_t size = std::stoul(header.substr(2));
    for (const std::string& behind : surplus) {
      if (GetParam() != Bus::kTcp && (behind.size() > 1000 || size == 5000)) continue;
      {
        const std::lock_guard lock(mutex);
        reply = header + std::string(size, '\n') + behind;
      }
      EXPECT_EQ(blocks.ReadBlock(1, "BLOCK?"), std::vector<std::uint8_t>{'#'});
      const auto rest = static_cast<std::int16_t>(header.size() - 1 + size);
      try {
        EXPECT_EQ(blocks.ReadBlock(rest, std::nullopt).back(), '\n');
      } catch (const host::AutomationError& error) {
        EXPECT_FALSE(EndsLine(behind.front())) << error.Description();
        EXPECT_EQ(error.Code(), 2012);
      }
      EXPECT_EQ(bench.port->Query("AFTER?"), "AFTER") << header << " and " << behind.size() << " bytes";
      EXPECT_EQ(bench.port->Query("AGAIN?"), "AGAIN");
    }
  }
}

TEST_P(BusTest, TextInsteadOfABlockIsLeftBehind) {
  Bench bench(GetParam(), [](std::string_view line, Wire& wire) {
    wire.Send(line == "BLOCK?" ? "-200,\"Execution error\"\n" : std::string(NumberOf(line)) + "\n");
  });
  EXPECT_EQ(bench.port->Blocks()->ReadBlock(1, "BLOCK?"), std::vector<std::uint8_t>{'-'});
  EXPECT_EQ(bench.port->Query("AFTER?"), "AFTER");
}

TEST(TcpResetTest, InEachPhaseIsALinkErrorThatIsOverWithTheNextOnLine) {
  Bench bench(Bus::kTcp, [](std::string_view line, Wire& wire) {
    if (line == "PART?") wire.Send("PA");
    if (line == "BLOCK?") wire.Send("#210abc");
    if (line == "PART?" || line == "BLOCK?") wire.Pause(30ms);
    if (line == "BEFORE?" || line == "PART?" || line == "BLOCK?" || line == "COMMAND") {
      wire.Reset();
    } else {
      wire.Send(std::string(NumberOf(line)) + "\n");
    }
  });
  const std::vector<std::function<void()>> phases = {
      [&] { bench.port->Query("BEFORE?"); },
      [&] { bench.port->Query("PART?"); },
      [&] { bench.port->Blocks()->ReadBlock(14, "BLOCK?"); },
      [&] {
        bench.port->Write("COMMAND");
        std::this_thread::sleep_for(30ms);
        bench.port->Write("NEXT");
      },
  };
  for (const auto& phase : phases) {
    const auto error = ErrorOf(phase);
    EXPECT_TRUE(error.Code() == 2010 || error.Code() == 2012) << error.Description();
    EXPECT_FALSE(bench.port->OnLine());
    bench.port->OnLine(true);
    EXPECT_EQ(bench.port->Query("AFTER?"), "AFTER");
  }
}

INSTANTIATE_TEST_SUITE_P(AllBuses, BusTest, testing::ValuesIn(kBuses),
                         [](const auto& test) { return NameOf(test.param); });

}  // namespace
}  // namespace workbench::test

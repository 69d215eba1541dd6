// Long runs: random faults between many exchanges, and ports opened and closed in a row. QKEL4X_ENDURANCE
// multiplies the counts, which are small enough for every day without it.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "workbench/tests/ports/bench.h"

namespace workbench::test {
namespace {

using namespace std::chrono_literals;

int Times(int count) {
  const char* const factor = std::getenv("QKEL4X_ENDURANCE");
  return count * (factor != nullptr ? std::max(1, std::atoi(factor)) : 1);
}

/// A number below `limit` that looks random and is the same in each run (SplitMix64).
unsigned Dice(std::uint64_t turn, unsigned limit) {
  std::uint64_t mixed = (turn + 1) * 0x9e3779b97f4a7c15U;
  mixed = (mixed ^ (mixed >> 30U)) * 0xbf58476d1ce4e5b9U;
  mixed = (mixed ^ (mixed >> 27U)) * 0x94d049bb133111ebU;
  return static_cast<unsigned>((mixed ^ (mixed >> 31U)) % limit);
}

std::ptrdiff_t OpenDescriptors() {
  const std::filesystem::directory_iterator files("/proc/self/fd");
  return std::distance(begin(files), end(files));
}

class RandomFaultsTest : public testing::TestWithParam<Bus> {};

TEST_P(RandomFaultsTest, EveryReplyStaysWithItsQuery) {
  // An adapter gives a read up after half a second, and each fault costs that; a line must fall silent.
  const bool adapter = GetParam() == Bus::kAdapter || GetParam() == Bus::kSerialAdapter;
  const float timeout = adapter ? 1.0F : 0.05F;
  const int count = Times(adapter || GetParam() == Bus::kSerial ? 1000 : 10000);
  std::atomic<int> faults{0};
  std::atomic<std::uint64_t> turn{0};
  Bench bench(GetParam(), [&faults, &turn](std::string_view line, Wire& wire) {
    const std::string reply = std::string(line.substr(0, line.size() - 1)) + "\n";
    const unsigned dice = Dice(turn++, 1000);
    if (dice >= 10) {
      wire.Send(reply);
      return;
    }
    ++faults;
    switch (dice) {
      case 0:
        break;  // silent
      case 1:
        wire.Pause(70ms), wire.Send(reply);
        break;  // late
      case 2:
        wire.Send(reply.substr(0, reply.size() / 2));
        break;  // cut
      case 3:
        wire.Send(reply + reply);
        break;  // doubled
      case 4:
        wire.Send(reply.substr(0, reply.size() - 1) + "\r");
        break;  // wrong terminator
      case 5:
        wire.Close();
        break;  // closed
      case 6:
        wire.Reset();
        break;  // reset
      case 7:
        wire.Send(reply.substr(0, 2)), wire.Close();
        break;  // cut and closed
      case 8:
        wire.Send(reply), wire.Close();
        break;  // closed after the reply
      default:
        for (const char c : reply) wire.Send({&c, 1});
        break;  // byte by byte
    }
  });
  bench.port->Timeout(timeout);
  int right = 0;
  int errors = 0;
  std::string reply;
  for (int i = 0; i < count; ++i) {
    const std::string number = std::to_string(i);
    try {
      if (!bench.port->OnLine()) bench.port->OnLine(true);
      bench.port->Exchange(number + "?", &reply);
      ASSERT_EQ(reply, number);
      ++right;
    } catch (const host::AutomationError& error) {
      ASSERT_TRUE(error.Code() >= host::kLinkNotOpen && error.Code() <= host::kLinkBusy)
          << error.Description();
      ++errors;
    }
  }
  EXPECT_EQ(right + errors, count);
  EXPECT_GT(faults, count / 200);
  EXPECT_LE(errors, 2 * faults);
  RecordProperty("exchanges", count);
  RecordProperty("errors", errors);
}

INSTANTIATE_TEST_SUITE_P(AllBuses, RandomFaultsTest, testing::ValuesIn(kBuses),
                         [](const auto& test) { return NameOf(test.param); });

/// What this process holds at the moment.
struct Held {
  std::ptrdiff_t descriptors = OpenDescriptors();
  std::ptrdiff_t threads = std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
  std::size_t heap_bytes = ::mallinfo2().uordblks;  // 0 under sanitizers, which look for leaks themselves
};

class OpenAndCloseTest : public testing::TestWithParam<Bus> {};

TEST_P(OpenAndCloseTest, LeaksNothing) {
  Bench bench(GetParam(), [](std::string_view line, Wire& wire) { wire.Send(std::string(line) + "\n"); });
  const auto cycle = [&bench](bool with_query) {
    bench.port->OnLine(false);
    ASSERT_NO_THROW(bench.port->OnLine(true));
    if (with_query) {
      ASSERT_EQ(bench.port->Query("A?"), "A?");
    }
  };
  // The peer closes its ends on threads of its own, and forgets them with the next one.
  const auto settled = [&cycle] {
    std::this_thread::sleep_for(50ms);
    cycle(true);
    return Held();
  };
  for (int i = 0; i < 10; ++i) cycle(true);
  const Held before = settled();
  const int count = Times(100);
  for (int i = 0; i < count && !HasFatalFailure(); ++i) cycle(i % 10 == 0);
  const Held after = settled();
  EXPECT_LE(after.descriptors, before.descriptors + 2);
  EXPECT_LE(after.threads, before.threads + 1);
  EXPECT_LE(after.heap_bytes, before.heap_bytes + 16 * 1024);
  RecordProperty("cycles", count);
}

INSTANTIATE_TEST_SUITE_P(AllBuses, OpenAndCloseTest, testing::ValuesIn(kBuses),
                         [](const auto& test) { return NameOf(test.param); });

class DeadlineTest : public testing::TestWithParam<Bus> {};

TEST_P(DeadlineTest, NoTransferOutlivesItsTimeoutByMoreThanFiftyMilliseconds) {
  constexpr double kTimeout = 0.1;
  std::atomic<bool> trickles{false};
  Bench bench(GetParam(), [&trickles](std::string_view, Wire& wire) {
    for (int i = 0; trickles && i < 10; ++i) {
      wire.Send("x");
      wire.Pause(20ms);
    }
  });
  std::vector<double> late_ms;
  for (int i = 0; i < Times(8); ++i) {
    trickles = i % 2 != 0;
    bench.port->OnLine(false);
    bench.port->Timeout(5.0F);
    bench.port->OnLine(true);
    bench.port->Timeout(static_cast<float>(kTimeout));
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_NE(ErrorOf([&] { bench.port->Query("A?"); }).Number(), 0);
    late_ms.push_back((SecondsSince(begin) - kTimeout) * 1e3);
  }
  std::ranges::sort(late_ms);
  RecordProperty("median_ms", static_cast<int>(std::lround(late_ms[late_ms.size() / 2])));
  RecordProperty("worst_ms", static_cast<int>(std::lround(late_ms.back())));
  EXPECT_LE(late_ms.back(), 50.0 + kSlack * 1e3);
}

INSTANTIATE_TEST_SUITE_P(AllBuses, DeadlineTest, testing::ValuesIn(kBuses),
                         [](const auto& test) { return NameOf(test.param); });

TEST(EnduranceTest, SixtyFourInstrumentsInOneProcess) {
  Workbench host;
  std::vector<std::thread> threads;
  threads.reserve(64);
  std::atomic<int> right{0};
  for (int t = 0; t < 64; ++t) {
    threads.emplace_back([&host, &right, t] {
      const auto port = host.CreateTransport("QPort.clsGUI");
      port->Settings()->Item("Instrument")->SetValue("KEL" + std::to_string(t), -1, -1);
      port->OnLine(true);
      for (int i = 0; i < 50; ++i) {
        if (port->Query("SYST:ERR?") == "0,\"No error\"") ++right;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(right, 64 * 50);
}

}  // namespace
}  // namespace workbench::test

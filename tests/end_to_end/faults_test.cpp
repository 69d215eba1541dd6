// Faults on the way between a driver and the simulated instrument, over every bus: a reading is the one that
// the instrument gave, or an error that says what happened; nothing hangs, and the next reading is right.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "host/automation_error.h"
#include "tests/end_to_end/bench.h"

namespace end_to_end {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using workbench::Attempt;
using workbench::Link;

/// What arrives in the place of a reply.
struct Chunk {
  std::string bytes;
  std::chrono::milliseconds after{0};  // the chunk before
};

struct Arrival {
  std::vector<Chunk> chunks;
  enum class Then { kEnds, kStops, kCloses, kResets } then = Then::kStops;
};

struct Fault {
  std::string name;
  Arrival (*arrive)(const std::string& reply);
  /// What the port says of it; empty where the reading succeeds at once or when the driver asks again.
  std::string error;
};

std::string Before(std::string_view reply, std::string_view terminator) {
  return std::string(reply.substr(0, reply.size() - 1)).append(terminator);
}

Arrival Bytewise(const std::string& reply) {
  Arrival arrival;
  for (const char c : reply) arrival.chunks.push_back({std::string(1, c), 2ms});
  arrival.then = Arrival::Then::kEnds;
  return arrival;
}

using Then = Arrival::Then;

// Of a reply "-43.2 (dBm)", whose sender sees to it that nothing but the line distorts it.
const Fault kFaults[] = {
    {"None",
     [](const std::string& r) {
       return Arrival{{{r}}, Then::kEnds};
     },
     ""},
    {"Late",
     [](const std::string& r) {
       return Arrival{{{r, 1200ms}}};
     },
     ""},
    {"Silent", [](const std::string&) { return Arrival{}; }, ""},
    {"Cut", [](const std::string& r) { return Arrival{{{r.substr(0, 2)}}}; }, ""},
    {"CutAndLate",
     [](const std::string& r) {
       return Arrival{{{r.substr(0, 2)}, {r.substr(2), 1200ms}}};
     },
     ""},
    {"Doubled",
     [](const std::string& r) {
       return Arrival{{{r + r}}, Then::kEnds};
     },
     ""},
    {"Stale",
     [](const std::string& r) {
       return Arrival{{{"-99.9 (dBm)\n" + r}}, Then::kEnds};
     },
     "two replies came that differ"},
    {"Reordered",
     [](const std::string& r) {
       return Arrival{{{r + "-99.9 (dBm)\n"}}, Then::kEnds};
     },
     "two replies came that differ"},
    {"Garbage",
     [](const std::string&) {
       return Arrival{{{"\x83\xfe\x15#+2\n"}}, Then::kEnds};
     },
     "byte 1 of the reply is 0x83"},
    {"GarbageWithoutEnd", [](const std::string&) { return Arrival{{{"\x83\xfe\x15#+2"}}}; }, ""},
    {"Nul",
     [](const std::string& r) {
       return Arrival{{{r.substr(0, 2) + '\0' + r.substr(2)}}, Then::kEnds};
     },
     "byte 3 of the reply is 0x00"},
    {"EightBit",
     [](const std::string& r) {
       return Arrival{{{r.substr(0, 2) + '\xb3' + r.substr(3)}}, Then::kEnds};
     },
     "byte 3 of the reply is 0xB3"},
    {"WrongTerminator",
     [](const std::string& r) {
       return Arrival{{{Before(r, "\r")}}, Then::kEnds};
     },
     ""},
    {"ReturnFeed",
     [](const std::string& r) {
       return Arrival{{{Before(r, "\r\n")}}, Then::kEnds};
     },
     ""},
    {"Bytewise", Bytewise, ""},
    {"Overlong", [](const std::string&) { return Arrival{{{std::string(1100UL * 1024UL, '1')}}}; },
     "longer than 1048576 bytes"},
    {"Closed",
     [](const std::string&) {
       return Arrival{{}, Then::kCloses};
     },
     "closed the connection"},
    {"CutAndClosed",
     [](const std::string& r) {
       return Arrival{{{r.substr(0, 2)}}, Then::kCloses};
     },
     "the reply was cut short"},
    {"Reset",
     [](const std::string&) {
       return Arrival{{}, Then::kResets};
     },
     "the link was lost"},
};

/// What the links, which come and go, share with the test.
struct Spoiler {
  std::string query;
  const Fault* fault = nullptr;  // until it has happened
  std::vector<std::string> true_replies;
};

/// Lets the reply to one query arrive in another way than it was sent.
class FaultyLink final : public workbench::WrappedLink {
 public:
  FaultyLink(std::unique_ptr<Link> link, Spoiler& spoiler)
      : WrappedLink(std::move(link)), spoiler_(spoiler) {}

  std::string Fault() const override { return ended_ ? "the connection was reset" : WrappedLink::Fault(); }
  void Release(const workbench::Deadline& deadline) override {
    if (!ended_) WrappedLink::Release(deadline);
  }

  Attempt Send(std::string_view rest) override {
    if (ended_) return {*ended_, 0, false};
    asked_ = rest.starts_with(spoiler_.query);
    return WrappedLink::Send(rest);
  }

  Attempt Receive(std::span<char> into) override { return ReceiveFrom(&Link::Receive, into); }
  Attempt ReceiveUnasked(std::span<char> into) override { return ReceiveFrom(&Link::ReceiveUnasked, into); }

  Cleared Clear(const workbench::Deadline& deadline, double since) override {
    chunks_.clear();
    stopped_ = false;
    return WrappedLink::Clear(deadline, since);
  }

  Attempt DropArrived() override {
    if (ended_) return {*ended_, 0, false};
    chunks_.clear();
    return WrappedLink::DropArrived();
  }

 private:
  Attempt ReceiveFrom(Attempt (Link::*receive)(std::span<char>), std::span<char> into) {
    if (asked_) {
      std::array<char, 4096> bytes;
      const Attempt attempt = (Wrapped().*receive)(bytes);
      if (attempt.outcome != Attempt::Outcome::kDone) return attempt;
      reply_.append(bytes.data(), attempt.bytes);
      if (reply_.back() != '\n') return {};
      asked_ = false;
      spoiler_.true_replies.push_back(reply_);
      Arrive(std::exchange(reply_, {}));
    }
    if (!chunks_.empty()) return NextChunk(into);
    if (ended_) return {*ended_, 0, false};
    if (stopped_) {
      std::this_thread::sleep_for(20ms);
      return {};
    }
    return (Wrapped().*receive)(into);
  }

  void Arrive(const std::string& reply) {
    Arrival arrival{{{reply}}, Then::kEnds};
    if (spoiler_.fault != nullptr) arrival = std::exchange(spoiler_.fault, nullptr)->arrive(reply);
    auto ready = steady_clock::now();
    for (Chunk& chunk : arrival.chunks) {
      ready += chunk.after;
      chunks_.emplace_back(ready, std::move(chunk.bytes));
    }
    ends_ = arrival.then == Then::kEnds;
    stopped_ = arrival.then == Then::kStops;
    if (arrival.then == Then::kCloses) ended_ = Attempt::Outcome::kClosed;
    if (arrival.then == Then::kResets) ended_ = Attempt::Outcome::kLost;
  }

  Attempt NextChunk(std::span<char> into) {
    auto& [ready, bytes] = chunks_.front();
    if (ready > steady_clock::now()) {
      std::this_thread::sleep_until(std::min(ready, steady_clock::now() + 20ms));
      return {};
    }
    const std::size_t size = std::min(bytes.size(), into.size());
    std::copy_n(bytes.begin(), size, into.begin());
    bytes.erase(0, size);
    if (bytes.empty()) chunks_.pop_front();
    return {Attempt::Outcome::kDone, size, MarksEnd() && ends_ && chunks_.empty()};
  }

  Spoiler& spoiler_;
  bool asked_ = false;  // the reply that comes next is the one to spoil
  std::string reply_;
  std::deque<std::pair<steady_clock::time_point, std::string>> chunks_;
  bool ends_ = false;
  bool stopped_ = false;
  std::optional<Attempt::Outcome> ended_;
};

class FaultsTest : public testing::TestWithParam<std::tuple<Bus, std::size_t>> {
 protected:
  Bus bus_ = std::get<0>(GetParam());
  const Fault& fault_ = kFaults[std::get<1>(GetParam())];
  Spoiler spoiler_;
  Bench bench_{bus_, [this](std::unique_ptr<Link> link) {
                 return std::make_unique<FaultyLink>(std::move(link), spoiler_);
               }};
  clsKEL4x& driver_ = bench_.Driver();

  void GoOnLine() {
    driver_.OnLine(true);
    ASSERT_TRUE(driver_.OnLine()) << bench_.LastLinkError();
    // An adapter is busy for half a second with a read that brings nothing.
    const bool adapter = bus_ == Bus::kAdapter || bus_ == Bus::kSerialAdapter;
    bench_.Port()->Timeout(adapter ? 0.8F : 0.25F);
  }

  /// The level must be the one that the instrument sent last.
  void ExpectTrueLevel() {
    const double level = driver_.MeasureRfLevel();
    ASSERT_FALSE(spoiler_.true_replies.empty());
    EXPECT_EQ(level, std::strtod(spoiler_.true_replies.back().c_str(), nullptr));
  }
};

TEST_P(FaultsTest, AReadingIsRightOrAnErrorThatSaysWhy) {
  GoOnLine();
  spoiler_.query = "READ:RF:LEVEL?";
  ExpectTrueLevel();
  const std::size_t asked_before = spoiler_.true_replies.size();
  spoiler_.fault = &fault_;
  const auto begin = steady_clock::now();
  if (fault_.error.empty()) {
    EXPECT_NO_THROW(ExpectTrueLevel()) << bench_.LastLinkError();
    RecordProperty("outcome", spoiler_.true_replies.size() - asked_before == 1 ? "reading" : "asked again");
  } else {
    try {
      FAIL() << "read as " << driver_.MeasureRfLevel();
    } catch (const host::AutomationError& error) {
      // Where the link is gone, so is the error queue that the description would end with.
      const bool lost = !bench_.Port()->OnLine();
      RecordProperty("outcome", error.Code());
      EXPECT_EQ(error.Code(), lost ? 2010 : 2004);
      const char* const says =
          lost ? "the port is not open any more: " : "Get MeasureRfLevel failed.  Error : ";
      EXPECT_NE(error.Description().find(says), std::string::npos) << error.Description();
    }
    const auto recorded = bench_.Host().Errors().Recorded();
    EXPECT_TRUE(std::ranges::any_of(recorded, [this](const auto& entry) {
      return entry.description.find(fault_.error) != std::string::npos;
    })) << bench_.LastLinkError();
  }
  EXPECT_LT(steady_clock::now() - begin, 10s);
  EXPECT_EQ(spoiler_.fault, nullptr) << "the fault never happened";

  if (!driver_.OnLine()) GoOnLine();
  ExpectTrueLevel();
  ExpectTrueLevel();
}

INSTANTIATE_TEST_SUITE_P(All, FaultsTest,
                         testing::Combine(testing::ValuesIn(kBuses),
                                          testing::Range<std::size_t>(0, std::size(kFaults))),
                         [](const auto& test) {
                           return NameOf(std::get<0>(test.param)) + kFaults[std::get<1>(test.param)].name;
                         });

}  // namespace
}  // namespace end_to_end

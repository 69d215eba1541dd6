// The host's objects as the driver meets them: replaced, absent, returning where they should throw, changing
// their mind, and shared by two threads.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "../member_cases/scripted_host.h"
#include "driver/clsKEL4x.h"

namespace qkel4x {
namespace {

using member_cases::ScriptedNode;

constexpr std::int32_t kBase = host::kObjectErrorBase;

// A transport that answers at once and keeps nothing that threads would share.
class AnsweringTransport final : public host::Transport {
 public:
  explicit AnsweringTransport(std::string_view class_name) : settings_(std::make_shared<ScriptedNode>()) {
    settings_->Initialise(class_name == "QPort.clsComm" ? "RS232" : class_name.substr(9), 4, 3, "", "");
    for (const char* name :
         {"Primary Address", "Comm Port", "Baud Rate", "Data Bits", "Parity", "Stop Bits", "Handshaking"}) {
      settings_->AddChild(name, 1, 4, "", "");
    }
  }
  std::string Name() override { return name_; }
  void Name(std::string_view name) override { name_ = name; }
  std::shared_ptr<host::ParameterNode> Settings() override { return settings_; }
  bool OnLine() override { return on_line_; }
  void OnLine(bool on_line) override { on_line_ = on_line; }
  float Timeout() override { return timeout_; }
  void Timeout(float seconds) override { timeout_ = seconds; }
  void Write(std::string_view) override {}
  void Exchange(std::string_view command, std::string* reply) override {
    if (reply) *reply = Answer(command);
  }
  std::string Query(std::optional<std::string_view> command) override { return Answer(command.value_or("")); }
  host::BlockTransfer* Blocks() override { return nullptr; }

 private:
  std::string Answer(std::string_view command) const {
    if (command == "SYST:ERR?") return "0,\"No error\"";
    if (command == "SENSE:ATSC:EQU?") return "ON";
    if (command == "*IDN?") return name_ + ",KEL 40,1,5.10";
    if (command == "READ:ATSC:JITT:VAL?") return "1,2,3,4,5,6,7,8,9,10,11,12,13,14";
    return name_;
  }

  std::shared_ptr<ScriptedNode> settings_;
  std::string name_;
  float timeout_ = 5.0F;
  bool on_line_ = false;
};

class AnsweringHost final : public host::Host,
                            private host::ErrorReporter,
                            private host::HostRuntime,
                            private host::MessageLog {
 public:
  AnsweringHost() : before_(host::SetCurrentHost(this)) {}
  ~AnsweringHost() override { host::SetCurrentHost(before_); }
  AnsweringHost(const AnsweringHost&) = delete;
  AnsweringHost& operator=(const AnsweringHost&) = delete;

  host::ErrorReporter& Errors() override { return *this; }
  host::HostRuntime& Runtime() override { return *this; }
  host::MessageLog& Log() override { return *this; }
  std::shared_ptr<host::ParameterNode> CreateParameterNode() override {
    return std::make_shared<ScriptedNode>();
  }
  std::shared_ptr<host::Transport> CreateTransport(std::string_view class_name) override {
    return std::make_shared<AnsweringTransport>(class_name);
  }

  bool reporter_throws = true;
  bool log_throws = false;
  std::atomic<int> raised{0};
  std::atomic<int> logged{0};
  std::function<bool()> simulation = [] { return false; };

 private:
  void Raise(std::int32_t number, std::string_view source, std::string_view description,
             std::optional<std::string_view>, std::optional<std::int32_t>) override {
    ++raised;
    if (reporter_throws) throw host::AutomationError(number, std::string(source), std::string(description));
  }
  bool ReportingEnabled() override { return true; }
  void ReportingEnabled(bool) override {}
  bool SimulationActive() override { return simulation(); }
  void Wait(float) override {}
  void Append(std::int32_t, std::string_view, std::string_view, std::string_view) override {
    ++logged;
    if (log_throws) throw host::AutomationError(host::kInvalidProcedureCall, "MessageLog", "full");
  }
  void KindEnabled(std::int32_t, bool) override {}

  host::Host* before_;
};

template <class Call>
void ExpectError(const Call& call, std::int32_t number, const std::string& source,
                 const std::string& description) {
  try {
    call();
    ADD_FAILURE() << "expected: " << description;
  } catch (const host::AutomationError& error) {
    EXPECT_EQ(error.Number(), number);
    EXPECT_EQ(error.Source(), source);
    EXPECT_EQ(error.Description(), description);
  }
}

TEST(HostObjects, WithoutAHostNothingWorks) {
  ASSERT_EQ(host::SetCurrentHost(nullptr), nullptr);
  EXPECT_THROW(host::CurrentHost(), host::AutomationError);
  try {
    clsKEL4x driver;
    FAIL();
  } catch (const host::AutomationError& error) {
    EXPECT_EQ(error.Number(), host::kNoObject);
  }
}

TEST(HostObjects, AnotherHostServesFromTheNextCallOn) {
  AnsweringHost first;
  clsKEL4x driver;
  {
    AnsweringHost second;
    ExpectError([&] { driver.Mode(kelNTSC); }, kBase + 380, "clsKEL4x.Mode",
                "Invalid property value (Mode = NTSC)");
    EXPECT_EQ(second.raised, 1);
    EXPECT_EQ(first.raised, 0);
    second.simulation = [] { return true; };
    driver.OnLine(true);
    EXPECT_EQ(driver.Mode(), KelModes{});
  }
  ExpectError([&] { driver.Mode(kelNTSC); }, kBase + 380, "clsKEL4x.Mode",
              "Invalid property value (Mode = NTSC)");
  EXPECT_EQ(first.raised, 1);
}

TEST(HostObjects, AReporterThatReturnsDoesNotLetACallGoOn) {
  AnsweringHost host;
  clsKEL4x driver;
  driver.Name("ATSC");
  host.reporter_throws = false;
  ExpectError([&] { driver.Mode(kelNTSC); }, kBase + 380, "clsKEL4x.Mode",
              "Invalid property value (Mode = NTSC)");
  ExpectError([&] { driver.MeasureMode(kelUndefined); }, kBase + 380, "clsKEL4x.MeasureMode",
              "Invalid property value (MeasureMode = -1)");
  ExpectError([&] { driver.MeasureRfLevel(); }, kBase + 2004, "clsKEL4x.MeasureRfLevel",
              "Get MeasureRfLevel failed");
  ExpectError([&] { driver.OnLine(false); }, 2003, "clsKEL4x.OnLine", "Driver already off-line");
  driver.OnLine(true);
  driver.MeasureMode(kelNORM);
  ExpectError([&] { driver.MeasureTdCcdfPapr(); }, kBase + 2016, "clsKEL4x.MeasureTdCcdfPapr",
              "Wrong measurement mode selected");
  EXPECT_EQ(host.raised, 5);
}

TEST(HostObjects, AFailingLogIsIgnored) {
  AnsweringHost host;
  clsKEL4x driver;
  driver.Name("1.5");
  driver.OnLine(true);
  host.log_throws = true;
  host.logged = 0;
  EXPECT_EQ(driver.MeasureRfLevel(), 1.5);
  EXPECT_EQ(host.logged, 4);
}

// The flag is true from the `first` to before the `last` time that it is asked for.
std::function<bool()> TrueWithin(int first, int last) {
  return [first, last, times = 0]() mutable {
    const int time = times++;
    return time >= first && time < last;
  };
}

TEST(HostObjects, ASimulationThatEndsInsideAMeasurementLeavesNoValue) {
  // "No value available" needs a store that was never filled: a flag that is up when the measurement stores
  // its reply and down when the getter looks at it.
  struct Indexed {
    std::string name;
    double (clsKEL4x::*read)(const std::int16_t&);
    KelMeasureModes mode;
  };
  const Indexed members[] = {
      {"GhostPatternAtten", &clsKEL4x::GhostPatternAtten, kelEPAT},
      {"GhostPatternDelay", &clsKEL4x::GhostPatternDelay, kelEPAT},
      {"AmplitudeJitterValue", &clsKEL4x::AmplitudeJitterValue, kelAJIT},
      {"AmplitudeJitterFreq", &clsKEL4x::AmplitudeJitterFreq, kelAJIT},
      {"PhaseJitterValue", &clsKEL4x::PhaseJitterValue, kelPJIT},
      {"PhaseJitterFreq", &clsKEL4x::PhaseJitterFreq, kelPJIT},
  };
  for (const Indexed& member : members) {
    int without_value = 0;
    for (int first = 0; first < 12; ++first) {
      for (int last = first + 1; last <= 12; ++last) {
        AnsweringHost host;
        clsKEL4x driver;
        driver.OnLine(true);
        driver.MeasureMode(member.mode);
        host.simulation = TrueWithin(first, last);
        try {
          (driver.*member.read)(std::int16_t{1});
        } catch (const host::AutomationError& error) {
          if (error.Code() != 2004) continue;
          ++without_value;
          EXPECT_EQ(error.Source(), "clsKEL4x." + member.name);
          EXPECT_EQ(error.Description(), "Get " + member.name + ": no value available");
        }
      }
    }
    EXPECT_GT(without_value, 0) << member.name;
  }
}

TEST(Threads, TwoDriversOnTwoThreadsAreIndependent) {
  AnsweringHost host;
  std::vector<std::thread> threads;
  std::atomic<int> wrong{0};
  for (const char* name : {"1.5", "2.5"}) {
    threads.emplace_back([name, &wrong] {
      clsKEL4x driver;
      driver.Name(name);
      driver.OnLine(true);
      driver.MeasureMode(kelNORM);
      const double expected = name[0] - '0' + 0.5;
      for (int i = 0; i < 300; ++i) {
        if (driver.MeasureRfLevel() != expected || driver.ResponseString() != name) ++wrong;
        if (driver.MeasureVsbMerRmsDb() != expected || driver.Manufacturer() != name) ++wrong;
        driver.RfCenterFrequency(5e8 + i);
        try {
          driver.MeasureTdCcdfPapr();
          ++wrong;
        } catch (const host::AutomationError& error) {
          if (error.Code() != 2016) ++wrong;
        }
      }
      driver.OnLine(false);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(host.raised, 600);
  EXPECT_GT(host.logged, 0);
}

}  // namespace
}  // namespace qkel4x

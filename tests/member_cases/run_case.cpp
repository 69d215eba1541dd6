// Runs a case step by step on a scripted host and says what differed first.
#include "run_case.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <exception>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "scripted_host.h"

namespace member_cases {
namespace {

using automation::Value;

std::string Show(double number) {
  std::array<char, 64> text{};
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

std::string Show(const CaseValue& value) {
  if (const auto* flag = std::get_if<bool>(&value)) return *flag ? "true" : "false";
  if (const auto* whole = std::get_if<std::int64_t>(&value)) return std::to_string(*whole);
  if (const auto* real = std::get_if<double>(&value)) return "float " + Show(*real);
  if (const auto* text = std::get_if<std::string>(&value)) return "'" + *text + "'";
  return "nothing";
}

// A result in the terms of the case files.
CaseValue InCaseTerms(const Value& value) {
  if (const auto* flag = std::get_if<bool>(&value)) return *flag;
  if (const auto* whole = std::get_if<std::int16_t>(&value)) return std::int64_t{*whole};
  if (const auto* whole = std::get_if<std::int32_t>(&value)) return std::int64_t{*whole};
  if (const auto* real = std::get_if<double>(&value)) return *real;
  if (const auto* date = std::get_if<qkel4x::DateTime>(&value)) return date->days;
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  return {};
}

CaseValue InCaseTerms(const host::Value& value) {
  if (const auto* flag = std::get_if<bool>(&value)) return *flag;
  if (const auto* whole = std::get_if<std::int16_t>(&value)) return std::int64_t{*whole};
  if (const auto* whole = std::get_if<std::int32_t>(&value)) return std::int64_t{*whole};
  if (const auto* real = std::get_if<double>(&value)) return *real;
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  return {};
}

host::Value InHostTerms(const CaseValue& value) {
  if (const auto* flag = std::get_if<bool>(&value)) return *flag;
  if (const auto* whole = std::get_if<std::int64_t>(&value)) return static_cast<std::int32_t>(*whole);
  if (const auto* real = std::get_if<double>(&value)) return *real;
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  return {};
}

bool Agree(const CaseValue& expected, const CaseValue& actual) {
  const auto* wanted = std::get_if<double>(&expected);
  const auto* got = std::get_if<double>(&actual);
  if (!wanted || !got) return expected == actual;
  return std::abs(*wanted - *got) <= 1e-12 * std::max(std::abs(*wanted), std::abs(*got));
}

class Difference : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

void Compare(const std::string& what, const CaseValue& expected, const CaseValue& actual) {
  if (!Agree(expected, actual)) {
    throw Difference(what + ": expected " + Show(expected) + ", got " + Show(actual));
  }
}

std::string Joined(const std::vector<std::string>& lines) {
  std::string all;
  for (const std::string& line : lines) all += "\n    " + line;
  return all.empty() ? " nothing" : all;
}

class Run {
 public:
  Run(const Case& one, Calls& calls) : case_(one), calls_(calls) {}
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;
  ~Run() { calls_.Release(); }

  void Prepare() {
    calls_.Create();
    const auto settings = calls_.Settings();
    settings->Item("Remote Control")->SetValue(case_.port, -1, -1);
    settings->Item("Log Messages")->SetValue(std::string(case_.log ? "Yes" : "No"), -1, -1);
    if (case_.on_line) {
      host_.LetPass();
      if (case_.port == "QPort.clsComm") host_.serial_ports = {1};
      calls_.Put("IDriverSetup", "OnLine", true);
      if (calls_.Get("IDriverSetup", "OnLine", {}) != Value(true))
        throw Difference("the driver does not go on line");
    }
    if (case_.mode) calls_.Put("", "MeasureMode", std::int64_t{*case_.mode});
    if (host_.Port()) host_.Port()->PresetTimeout(static_cast<float>(case_.timeout));
    host_.simulation = case_.simulation;
  }

  void Do(const Step& step) {
    host_.Expect(step.talk);
    bool failed = false;
    try {
      Act(step);
    } catch (const host::AutomationError& error) {
      failed = true;
      // A departure from the script explains any error better than the error itself.
      Settle(step);
      CompareError(step, error);
    }
    Settle(step);
    if (step.error && !failed) throw Difference("expected an error, got none: " + Expected(*step.error));
    CompareState(step);
  }

 private:
  void Act(const Step& step) {
    switch (step.action) {
      case Step::Action::kGet:
        Get(step);
        break;
      case Step::Action::kPut:
        calls_.Put(step.interface_name, step.member, step.value);
        break;
      case Step::Action::kCall:
        calls_.Call(step.member);
        break;
      case Step::Action::kSimulation:
        host_.simulation = std::get<bool>(step.value);
        break;
      case Step::Action::kSetting: {
        const auto node = calls_.Settings()->Item(step.member);
        if (step.write != CaseValue()) {
          node->SetValue(InHostTerms(step.write), -1, -1);
        } else {
          Compare(step.member, step.value, InCaseTerms(node->GetValue(-1, -1)));
        }
        break;
      }
      case Step::Action::kStatistics:
        statistics_ = calls_.NewStatistics();
        calls_.WriteStatistics(*statistics_, step.member);
        break;
      case Step::Action::kRelease:
        calls_.Release();
        break;
    }
  }

  void Get(const Step& step) {
    std::vector<Value> arguments;
    for (const std::int64_t argument : step.arguments)
      arguments.emplace_back(static_cast<std::int32_t>(argument));
    const bool has_buffer = step.member == "ScreenShot";
    if (has_buffer) arguments.emplace_back(step.buffer.value_or(Bytes()));
    // A call that fails, too, may have touched its buffer.
    struct Keep {
      Run& run;
      std::vector<Value>& arguments;
      bool has_buffer;
      ~Keep() {
        if (has_buffer) run.buffer_ = std::get<automation::Bytes>(arguments.back());
      }
    } keep{*this, arguments, has_buffer};
    const Value result = calls_.Get(step.interface_name, step.member, arguments);
    if (const auto* statistics = std::get_if<automation::Statistics>(&result)) {
      if (*statistics == statistics_) throw Difference("the same object again, not a new one");
      statistics_ = *statistics;
    }
    if (step.value != CaseValue()) Compare(step.member, step.value, InCaseTerms(result));
  }

  void Settle(const Step& step) {
    if (const std::string complaint = host_.Complaint(); !complaint.empty()) throw Difference(complaint);
    if (host_.log != step.log) {
      throw Difference("message log: expected" + Joined(step.log) + "\n  got" + Joined(host_.log));
    }
  }

  static std::string Expected(const ExpectedError& error) {
    return std::to_string(*error.number) + " '" + error.source.value_or("...") + "' '" +
           error.description.value_or("...") + "'";
  }

  void CompareError(const Step& step, const host::AutomationError& error) {
    const std::string got =
        std::to_string(error.Number()) + " '" + error.Source() + "' '" + error.Description() + "'";
    if (!step.error) throw Difference("failed: " + got);
    if (error.Number() != *step.error->number ||
        error.Source() != step.error->source.value_or(error.Source()) ||
        error.Description() != step.error->description.value_or(error.Description())) {
      throw Difference("error: expected " + Expected(*step.error) + "\n  got " + got);
    }
    // The driver's own errors go through the host's reporter and carry no help; others pass as they came.
    const bool own = error.Source().starts_with("clsKEL4x.");
    if (own && (host_.raised.empty() || host_.raised.back().Description() != error.Description())) {
      throw Difference("the error did not go through the error reporter: " + got);
    }
    if (own && (error.HelpFile() != calls_.HelpFile() || error.HelpContext() != 0))
      throw Difference("the error has help");
    if (error.Source() == "QPort" && (error.HelpFile() != "QPORT.HLP" || error.HelpContext() != 7)) {
      throw Difference("the error passed through has lost its help");
    }
  }

  void CompareState(const Step& step) {
    for (const auto& [name, expected] : step.fields) {
      if (!statistics_) throw Difference("there is no clsStatistics object");
      Compare(name, expected, InCaseTerms(calls_.GetField(*statistics_, name)));
    }
    if (step.buffer_after && *step.buffer_after != buffer_) {
      throw Difference("the buffer holds " + std::to_string(buffer_.size()) +
                       " bytes, or others than expected");
    }
    CompareText(step.prefix, "Prefix");
    CompareText(step.response, "ResponseString");
    CompareText(step.postfix, "Postfix");
    if (step.timeout_after) {
      if (!host_.Port()) throw Difference("there is no transport");
      Compare("time-out", *step.timeout_after, static_cast<double>(host_.Port()->Timeout()));
    }
    if (const std::string complaint = host_.Complaint(); !complaint.empty()) throw Difference(complaint);
  }

  void CompareText(const std::optional<std::string>& expected, const std::string& member) {
    if (expected) Compare(member, *expected, InCaseTerms(calls_.Get("", member, {})));
  }

  const Case& case_;
  Calls& calls_;
  ScriptedHost host_;
  std::shared_ptr<qkel4x::clsStatistics> statistics_;
  Bytes buffer_;
};

}  // namespace

std::string RunCase(const Case& one, Calls& calls) {
  std::size_t position = 0;
  std::string where;
  try {
    Run run(one, calls);
    run.Prepare();
    for (const Step& step : one.steps) {
      where = "step " + std::to_string(++position) + " (" + step.member + "): ";
      run.Do(step);
    }
    return {};
  } catch (const std::exception& error) {
    return one.file + ".toml:" + std::to_string(one.line) + ": " + one.name + ": " + where + error.what();
  }
}

}  // namespace member_cases

// Fails for what the member table publishes and no case holds: a member, a direction, an enumerator, a
// measurement mode at a gate, an error text. What is left out is left out by name, with its reason.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "automation/enumeration_table.h"
#include "automation/member_table.h"
#include "case_file.h"
#include "host/automation_error.h"

namespace {

using member_cases::Case;
using member_cases::Step;

enum class Direction { kGet, kPut, kCall };

// What the cases do with one member in one direction.
struct Evidence {
  bool succeeded = false;
  std::set<std::int64_t> values;       ///< read or written, refused ones too
  std::set<std::int32_t> accepted_in;  ///< measurement modes of the cases where it succeeded
  std::set<std::int32_t> refused_in;   ///< and where it failed with 2016
  bool long_text = false;              ///< failed with the error-queue entry
  bool short_text = false;             ///< failed with the text alone
  bool passed_through = false;         ///< failed with 40006, unchanged
  bool off_line = false;               ///< failed off line
};

constexpr std::int32_t kBadMeasureMode = host::kObjectErrorBase + 2016;
constexpr std::int32_t kPassesThrough = 40006;

class Completeness : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    for (const Case& one : member_cases::ReadAllCases(QKEL4X_CASES)) Count(one);
  }

  static void Count(const Case& one) {
    std::optional<std::int32_t> mode = one.mode;
    for (const Step& step : one.steps) {
      if (AnswersUndefined(step)) mode = qkel4x::kelUndefined;
      const bool is_member = step.action == Step::Action::kGet || step.action == Step::Action::kPut ||
                             step.action == Step::Action::kCall;
      if (!is_member) continue;
      const Direction direction = step.action == Step::Action::kGet   ? Direction::kGet
                                  : step.action == Step::Action::kPut ? Direction::kPut
                                                                      : Direction::kCall;
      Count(one, mode, step, evidence_[{step.interface_name + "." + step.member, direction}]);
      if (direction != Direction::kPut || step.error) continue;
      if (step.member == "MeasureMode") mode = static_cast<std::int32_t>(std::get<std::int64_t>(step.value));
      if (step.member == "Mode") mode.reset();
    }
  }

  static bool AnswersUndefined(const Step& step) {
    return std::any_of(step.talk.begin(), step.talk.end(), [](const member_cases::Event& event) {
      return event.text == "SENS:ATSC:MEAS?" && event.reply && event.reply->starts_with('0');
    });
  }

  // `mode` is the measurement mode that the case has set before the step, or nothing where it has set none.
  static void Count(const Case& one, std::optional<std::int32_t> mode, const Step& step, Evidence& found) {
    if (const auto* value = std::get_if<std::int64_t>(&step.value)) found.values.insert(*value);
    if (!step.error) {
      found.succeeded = true;
      if (mode && !one.simulation) found.accepted_in.insert(*mode);
      return;
    }
    const std::string& text = step.error->description.value_or("");
    if (step.error->number == kPassesThrough) found.passed_through = true;
    if (text.find(" failed.  Error : ") != std::string::npos) found.long_text = true;
    if (text.ends_with(" failed")) found.short_text = true;
    if (!one.on_line) found.off_line = true;
    if (step.error->number == kBadMeasureMode && text == "Wrong measurement mode selected" && mode &&
        !one.simulation) {
      found.refused_in.insert(*mode);
    }
  }

  static const Evidence& Of(const std::string& member, Direction direction) {
    return evidence_[{member, direction}];
  }

  static inline std::map<std::pair<std::string, Direction>, Evidence> evidence_;
};

std::string Named(const std::string& member, Direction direction) {
  return member + (direction == Direction::kGet   ? " (get)"
                   : direction == Direction::kPut ? " (put)"
                                                  : " (call)");
}

struct Published {
  std::string name;  ///< "interface.member"; the class's own have an empty interface
  Direction direction;
  const automation::Member* member;
};

void AddMembers(const std::string& interface, const automation::Class& owner, std::vector<Published>& all) {
  for (const automation::Member& member : owner.members) {
    const std::string name = interface + "." + std::string(member.name);
    if (member.access.kind == automation::Kind::kMethod) {
      all.push_back({name, Direction::kCall, &member});
      continue;
    }
    if (member.Readable()) all.push_back({name, Direction::kGet, &member});
    if (member.Writable()) all.push_back({name, Direction::kPut, &member});
  }
}

std::vector<Published> DriverMembers() {
  std::vector<Published> all;
  AddMembers("", automation::kDriverClass, all);
  return all;
}

TEST_F(Completeness, EveryMemberSucceedsInEveryDirection) {
  std::vector<Published> all = DriverMembers();
  AddMembers("IDriverSetup", automation::kSetupInterface, all);
  AddMembers("IDriverIdentify", automation::kIdentifyInterface, all);
  for (const Published& one : all) {
    if (one.name == "IDriverSetup.Settings") continue;  // the steps with `setting` go through it
    EXPECT_TRUE(Of(one.name, one.direction).succeeded) << Named(one.name, one.direction);
  }
}

TEST_F(Completeness, EveryMemberOfTheCasesIsPublished) {
  for (const auto& [key, found] : evidence_) {
    const std::string& name = key.first;
    const std::size_t dot = name.find('.');
    const std::string interface = name.substr(0, dot);
    const automation::Class& owner = interface.empty()             ? automation::kDriverClass
                                     : interface == "IDriverSetup" ? automation::kSetupInterface
                                                                   : automation::kIdentifyInterface;
    EXPECT_NE(owner.Find(name.substr(dot + 1)), nullptr) << name;
  }
}

TEST_F(Completeness, EveryEnumeratorIsWrittenAndRead) {
  for (const Published& one : DriverMembers()) {
    const automation::Enumeration* enumeration = one.member->access.type.enumeration;
    if (!enumeration || one.direction == Direction::kCall) continue;
    for (const automation::Enumerator& enumerator : enumeration->enumerators) {
      // What is in use now is a step, never the automatic setting.
      const bool never = one.name.starts_with(".InputAttenuationValue") && enumerator.name == "kelAttenAuto";
      EXPECT_EQ(Of(one.name, one.direction).values.contains(enumerator.value), !never)
          << Named(one.name, one.direction) << ' ' << enumerator.name;
    }
  }
}

TEST_F(Completeness, EveryGateMeetsEveryMeasurementMode) {
  for (const Published& one : DriverMembers()) {
    const qkel4x::ModeSet modes = one.member->modes;
    if (modes.Empty()) continue;
    const Evidence& found = Of(one.name, one.direction);
    for (std::int32_t mode = qkel4x::kelUndefined; mode <= qkel4x::kelCENV; ++mode) {
      const bool accepted = modes.Has(static_cast<qkel4x::KelMeasureModes>(mode));
      EXPECT_TRUE((accepted ? found.accepted_in : found.refused_in).contains(mode))
          << Named(one.name, one.direction) << " in mode " << mode;
      EXPECT_FALSE((accepted ? found.refused_in : found.accepted_in).contains(mode))
          << Named(one.name, one.direction) << " in mode " << mode << ": cases and member table differ";
    }
  }
}

TEST_F(Completeness, EveryGateOfTheCasesIsInTheMemberTable) {
  for (const Published& one : DriverMembers()) {
    // An indexed property reads its store in any mode; the measurement that it may need has the gate.
    const bool indexed = one.member->access.kind == automation::Kind::kIndexedProperty;
    if (indexed || !one.member->modes.Empty()) continue;
    EXPECT_TRUE(Of(one.name, one.direction).refused_in.empty())
        << Named(one.name, one.direction) << " is refused in some mode, but the table says any mode";
  }
}

// Members whose failures are others' failures: they have texts for refusals only.
bool HasNoFrame(std::string_view member) {
  static constexpr std::string_view kStatus[] = {".ResponseString", ".Prefix", ".Postfix"};
  static constexpr std::string_view kIndexed[] = {".GhostPatternAtten",    ".GhostPatternDelay",
                                                  ".AmplitudeJitterValue", ".AmplitudeJitterFreq",
                                                  ".PhaseJitterValue",     ".PhaseJitterFreq"};
  const auto is = [member](std::string_view name) { return name == member; };
  return std::any_of(std::begin(kStatus), std::end(kStatus), is) ||
         std::any_of(std::begin(kIndexed), std::end(kIndexed), is);
}

// Members of IDriverIdentify, and the class's own that forward to them: short text alone, for 40006 too.
bool ReportsShortAlone(std::string_view member) {
  static constexpr std::string_view kFields[] = {".Manufacturer", ".ModelNumber", ".SerialNumber",
                                                 ".FirmwareVersion", ".InstalledHardware"};
  return std::any_of(std::begin(kFields), std::end(kFields),
                     [member](std::string_view name) { return name == member; });
}

TEST_F(Completeness, EveryErrorTextIsRaised) {
  for (const Published& one : DriverMembers()) {
    if (HasNoFrame(one.name)) continue;
    const Evidence& found = Of(one.name, one.direction);
    EXPECT_TRUE(found.short_text) << Named(one.name, one.direction) << ": short text";
    EXPECT_TRUE(found.off_line) << Named(one.name, one.direction) << ": off line";
    if (ReportsShortAlone(one.name)) continue;
    EXPECT_TRUE(found.long_text) << Named(one.name, one.direction) << ": long text";
    EXPECT_TRUE(found.passed_through) << Named(one.name, one.direction) << ": 40006";
  }
}

TEST_F(Completeness, EveryFieldOfTheStatisticsIsRead) {
  std::set<std::string> fields;
  for (const Case& one : member_cases::ReadAllCases(QKEL4X_CASES)) {
    for (const Step& step : one.steps) {
      for (const auto& [name, value] : step.fields) fields.insert(name);
    }
  }
  for (const automation::Member& member : automation::kStatisticsClass.members) {
    EXPECT_TRUE(fields.contains(std::string(member.name))) << member.name;
  }
}

}  // namespace

// The walk through the measurement modes.
#include "survey.h"

#include <algorithm>
#include <bit>

#include "automation/enumeration_table.h"
#include "driver/core/error_constants.h"
#include "host/automation_error.h"

namespace kel4x {
namespace {

using automation::Member;
using automation::ValueType;
using qkel4x::KelMeasureModes;

// A link that fails so often in a row will not come back within this survey: a link that is only half there
// costs its whole time-out at every try.
constexpr int kMostLinkFailures = 2;

bool IsScreenShot(const Member& member) {
  return std::any_of(member.Parameters().begin(), member.Parameters().end(),
                     [](const automation::Type& type) { return type.value == ValueType::kBytes; });
}

// The unit that an enumerator stands for.
std::string_view UnitNamed(std::string_view enumerator) {
  static constexpr std::pair<std::string_view, std::string_view> kUnits[] = {
      {"kelDBMV", "dBmV"},   {"kelDBPW", "dBpW"},     {"kelDBUW", "dBuW"},
      {"kelDBM", "dBm"},     {"kelDBUV", "dBuV"},     {"kelMV", "mV"},
      {"kelMicroSec", "us"}, {"kelKilometres", "km"}, {"kelMiles", "miles"}};
  for (const auto& [name, unit] : kUnits) {
    if (enumerator == name) return unit;
  }
  return {};
}

class Walk {
 public:
  Walk(Session& session, const Tuning& tuning, const SurveyWatcher& watcher)
      : session_(session), tuning_(tuning), watcher_(watcher) {
    for (const Member& member : automation::kDriverClass.members) {
      if (!IsSurveyed(member)) continue;
      if (IsScreenShot(member)) {
        AddRow({&member, 0});
      } else {
        for (const Target& target : FindTargets(member.name)) AddRow(target);
      }
    }
    result_.resource = session.Target().text;
    result_.started = std::chrono::system_clock::now();
  }

  SurveyResult Run() {
    SetUp();
    const std::optional<KelMeasureModes> found = CurrentMode();
    const auto plan = PlanModes(automation::kDriverClass.members, found);
    for (std::size_t i = 0; i < plan.size() && !Ended(); ++i) {
      if (SwitchTo(plan[i], i == 0)) ReadAllowed(plan[i], i + 1 == plan.size());
    }
    // The instrument is left as it was found. A mode that cannot be read back is not, since the next program
    // that asks for the mode would fail.
    const KelMeasureModes left = found && *found != qkel4x::kelUndefined ? *found : qkel4x::kelNORM;
    Apply("MeasureMode = " + ModeName(left), [&] { session_.Driver().MeasureMode(left); });
    Finish();
    return std::move(result_);
  }

 private:
  struct Row {
    Reading reading;
    bool done = false;
  };

  void AddRow(const Target& target) {
    rows_.emplace_back();
    rows_.back().reading.target = target;
  }

  bool Ended() const { return !result_.lost.empty() || result_.interrupted; }

  void Progress(const std::string& doing) const {
    if (watcher_.progress) watcher_.progress(done_, rows_.size(), doing);
  }

  // Notices a lost link and an interruption after every call.
  void Judge(const std::string& what, const std::optional<Failure>& failure) {
    if (Session::Interrupted()) {
      result_.interrupted = true;
      return;
    }
    if (!failure || !failure->link_lost) {
      link_failures_ = 0;
      return;
    }
    if (!session_.OnLine() || ++link_failures_ >= kMostLinkFailures) {
      result_.lost = "the link was lost at " + what + ": " +
                     (failure->link.empty() ? failure->description : failure->link);
    }
  }

  template <class Call>
  void Apply(const std::string& what, const Call& call) {
    if (Ended()) return;
    Progress(what);
    session_.Link().Heading("survey: " + what);
    const auto failure = session_.Attempt(call);
    if (failure) result_.setup_failures.emplace_back(what, *failure);
    Judge(what, failure);
  }

  void SetUp() {
    qkel4x::clsKEL4x& driver = session_.Driver();
    Apply("Mode = kelATSC", [&] { driver.Mode(qkel4x::kelATSC); });
    if (tuning_.symbol_rate)
      Apply("StatusSymbolRate", [&] { driver.StatusSymbolRate(*tuning_.symbol_rate); });
    if (tuning_.center) Apply("RfCenterFrequency", [&] { driver.RfCenterFrequency(*tuning_.center); });
    if (tuning_.pilot) Apply("RfPilotFrequency", [&] { driver.RfPilotFrequency(*tuning_.pilot); });
  }

  std::optional<KelMeasureModes> CurrentMode() {
    if (Ended()) return std::nullopt;
    std::optional<KelMeasureModes> mode;
    session_.Link().Heading("survey: MeasureMode");
    // A mode that the driver cannot read back, such as a jitter mode, is no reason to stop: it is switched.
    const auto failure = session_.Attempt([&] { mode = session_.Driver().MeasureMode(); });
    Judge("MeasureMode", failure);
    return mode;
  }

  bool SwitchTo(KelMeasureModes mode, bool first) {
    result_.modes.push_back(ModeName(mode));
    std::optional<Failure> failure;
    KelMeasureModes current = qkel4x::kelUndefined;
    if (first) session_.Attempt([&] { current = session_.Driver().MeasureMode(); });
    if (current != mode) {
      const std::string what = "MeasureMode = " + ModeName(mode);
      Progress(what);
      session_.Link().Heading("survey: " + what);
      failure = session_.Attempt([&] { session_.Driver().MeasureMode(mode); });
      Judge(what, failure);
    }
    if (!failure) return true;
    result_.setup_failures.emplace_back("MeasureMode = " + ModeName(mode), *failure);
    // What only this mode allows cannot be read, for this reason.
    for (Row& row : rows_) {
      const auto modes = row.reading.target.member->modes;
      if (row.done || modes.bits != qkel4x::AnyOf(mode).bits) continue;
      row.reading.failure = failure;
      row.reading.mode = ModeName(mode);
      Done(row);
    }
    return false;
  }

  void ReadAllowed(KelMeasureModes mode, bool last) {
    for (Row& row : rows_) {
      if (Ended()) return;
      const Member& member = *row.reading.target.member;
      if (row.done || !(member.modes.Empty() || member.modes.Has(mode))) continue;
      if (FailedTogether(row)) continue;
      Progress(row.reading.target.Label());
      session_.Link().Heading("survey: " + row.reading.target.Label());
      row.reading =
          IsScreenShot(member) ? ReadScreen(row.reading.target) : Read(session_, row.reading.target);
      row.reading.mode = ModeName(mode);
      Judge(row.reading.target.Label(), row.reading.failure);
      if (result_.interrupted && row.reading.failure) return;
      // An indexed member has no gate of its own; the measurement behind it refuses all modes but one.
      const bool another_mode = row.reading.failure && !last && member.modes.Empty() &&
                                row.reading.failure->Code() == qkel4x::qkelBadMeasureMode;
      if (!another_mode) Done(row);
    }
  }

  // All values of an indexed member come from one measurement. Where that failed at the first of them it is
  // not tried again for each of the others.
  bool FailedTogether(Row& row) {
    if (row.reading.target.index <= 1) return false;
    const Reading& before = (&row - 1)->reading;
    if (!before.failure || before.failure->Code() == qkel4x::qkelBadMeasureMode ||
        before.failure->source == "clsKEL4x." + std::string(row.reading.target.member->name)) {
      return false;
    }
    row.reading.failure = before.failure;
    row.reading.mode = before.mode;
    Done(row);
    return true;
  }

  Reading ReadScreen(const Target& target) {
    Reading reading;
    reading.target = target;
    const auto begin = std::chrono::steady_clock::now();
    bool captured = false;
    reading.failure = session_.Attempt([&] {
      captured = session_.Driver().ScreenShot(
          static_cast<qkel4x::KelScreenShotModes>(qkel4x::kelCapture | qkel4x::kelTransfer), result_.screen);
    });
    reading.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    if (!reading.failure && !captured) {
      reading.failure = Failure{.number = host::kObjectErrorBase + qkel4x::qkelQueryFailed,
                                .source = "kel4x",
                                .description = "the instrument refused to capture its screen",
                                .link = {}};
    }
    if (!reading.failure) reading.value = result_.screen;
    return reading;
  }

  void Done(Row& row) {
    row.done = true;
    ++done_;
    ResolveUnit(row.reading);
    if (watcher_.reading) watcher_.reading(row.reading);
  }

  void Finish() {
    for (Row& row : rows_) {
      if (!row.done) {
        if (Ended()) {
          row.reading.failure = Failure{
              .number = host::kObjectErrorBase + host::kLinkNotOpen,
              .source = "kel4x",
              .description = result_.interrupted ? "not read: interrupted" : "not read: " + result_.lost,
              .link = {},
              .link_lost = !result_.interrupted};
        }
        Done(row);
      }
      result_.readings.push_back(std::move(row.reading));
    }
    Progress("done");
    result_.ended = std::chrono::system_clock::now();
  }

  // Some units are what a setting of the instrument says: "as SetupLevelUnit" in the member table.
  void ResolveUnit(Reading& reading) const {
    const std::string_view unit = reading.target.member->unit;
    if (!unit.starts_with("as ") || !reading.unit.empty() || reading.failure) return;
    for (const Row& row : rows_) {
      const bool is_setting = row.done && row.reading.target.member->name == unit.substr(3);
      if (is_setting) reading.unit = UnitNamed(BareValueText(row.reading));
    }
  }

  Session& session_;
  const Tuning& tuning_;
  const SurveyWatcher& watcher_;
  SurveyResult result_;
  std::vector<Row> rows_;
  std::size_t done_ = 0;
  int link_failures_ = 0;
};

}  // namespace

std::string ModeName(KelMeasureModes mode) {
  return automation::EnumeratorName(automation::kEnumeration<KelMeasureModes>, mode);
}

bool IsSurveyed(const Member& member) {
  if (!member.Readable() || member.hidden) return false;
  // The fields of the last reply are no reading: they stand beside each reading as its status and remark.
  return member.name != "ResponseString" && member.name != "Prefix" && member.name != "Postfix";
}

std::vector<KelMeasureModes> PlanModes(std::span<const Member> members,
                                       std::optional<KelMeasureModes> current) {
  std::vector<std::uint32_t> open;
  for (const Member& member : members) {
    if (!member.modes.Empty() && !member.hidden) open.push_back(member.modes.bits);
  }
  std::vector<KelMeasureModes> plan;
  while (!open.empty()) {
    // First what only one mode allows; then the mode that serves most of the rest.
    int best = 0;
    auto best_count = static_cast<std::ptrdiff_t>(-1);
    for (int mode = 0; mode < 32; ++mode) {
      const std::uint32_t bit = 1U << static_cast<unsigned>(mode);
      const bool only = std::find(open.begin(), open.end(), bit) != open.end();
      const auto count =
          std::count_if(open.begin(), open.end(), [&](std::uint32_t set) { return (set & bit) != 0; }) +
          (only ? static_cast<std::ptrdiff_t>(open.size()) : 0);
      if (count > best_count) {
        best = mode;
        best_count = count;
      }
    }
    const std::uint32_t bit = 1U << static_cast<unsigned>(best);
    std::erase_if(open, [&](std::uint32_t set) { return (set & bit) != 0; });
    plan.push_back(static_cast<KelMeasureModes>(best));
  }
  std::sort(plan.begin(), plan.end());
  if (current) {
    if (const auto found = std::find(plan.begin(), plan.end(), *current); found != plan.end()) {
      std::rotate(plan.begin(), found, found + 1);
    }
  }
  return plan;
}

SurveyResult RunSurvey(Session& session, const Tuning& tuning, const SurveyWatcher& watcher) {
  return Walk(session, tuning, watcher).Run();
}

}  // namespace kel4x

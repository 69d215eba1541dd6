// One reading of one member: value, unit, status word, or why it failed. And members as users name them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "automation/member_table.h"
#include "session.h"

namespace kel4x {

/// What is read: a member, with the index of an indexed property.
struct Target {
  const automation::Member* member = nullptr;
  std::int16_t index = 0;  ///< 0 where the member takes none

  std::string Label() const;  ///< "MeasureRfLevel", "GhostPatternAtten(1)"
};

struct Reading {
  Target target;
  automation::Value value;
  std::string unit;
  std::string status;  ///< status word of the instrument; empty for a plain valid value
  std::string remark;  ///< what the instrument added in parentheses
  std::string mode;    ///< the measurement mode it was read in, where that is known
  double seconds = 0;
  std::optional<Failure> failure;

  /// Whether there is a value: no failure, and the instrument did not say that it has none.
  bool Valid() const { return !failure && status != "---"; }
};

/// The member of that name, in any letter case. Throws a UsageError that names the nearest one.
const automation::Member& FindMember(std::string_view name);

/// What can be read under that name: one member, every index of an indexed one, or one index as "Name(3)".
/// Throws a UsageError.
std::vector<Target> FindTargets(std::string_view name);

/// The indices that an indexed property offers, out of its range; 0 and 0 where it takes no single index.
struct IndexRange {
  int first = 0;
  int last = 0;
};
IndexRange IndicesOf(const automation::Member& member);

/// Reads it. A failure is in the reading.
Reading Read(Session& session, const Target& target);

/// The value as people read it, with the status word: "33.1", "<0.1", "OVER", "---", "kelNORM"; empty for a
/// failure.
std::string ValueText(const Reading& reading);

/// The same without status word, for CSV; empty where there is no valid value.
std::string BareValueText(const Reading& reading);

/// A value out of a text, for a write or an argument of that type; an enumeration by name or number. Throws a
/// UsageError.
automation::Value ParseValue(std::string_view text, const automation::Type& type, std::string_view what);

/// "2 h 05 min 30 s" of a duration in days.
std::string DurationText(double days);

/// The durations and counts of an alarm statistics report, as label and text.
std::vector<std::pair<std::string, std::string>> StatisticsRows(const qkel4x::clsStatistics& statistics);

}  // namespace kel4x

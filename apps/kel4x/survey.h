// The main job: everything that the instrument can tell, read once, in one table.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "reading.h"
#include "session.h"

namespace kel4x {

/// What is set before the survey reads.
struct Tuning {
  std::optional<double> center;       ///< Hz
  std::optional<double> pilot;        ///< Hz
  std::optional<double> symbol_rate;  ///< symbols per second
};

/// What a survey found.
struct SurveyResult {
  std::string resource;
  std::chrono::system_clock::time_point started;
  std::chrono::system_clock::time_point ended;
  std::vector<std::string> modes;  ///< measurement modes in the order of the walk
  std::vector<Reading>
      readings;  ///< in the order of the member table, one for each index of an indexed member
  std::vector<std::pair<std::string, Failure>> setup_failures;  ///< settings that failed, by name
  std::vector<std::uint8_t> screen;  ///< the screen shot as PCX; empty where there is none
  std::string lost;                  ///< how the link was lost; empty where it was not
  bool interrupted = false;          ///< whether Ctrl-C ended it early
};

/// Who follows a survey while it runs. Both may be empty.
struct SurveyWatcher {
  std::function<void(std::size_t done, std::size_t total, const std::string& doing)> progress;
  std::function<void(const Reading&)> reading;
};

/// Whether a survey reads the member: it gives a value of the instrument by itself, and is not hidden.
bool IsSurveyed(const automation::Member& member);

/// The fewest measurement modes that every gated member among these is allowed in at least one of, `current`
/// first where it is one of them.
std::vector<qkel4x::KelMeasureModes> PlanModes(std::span<const automation::Member> members,
                                               std::optional<qkel4x::KelMeasureModes> current);

/// Runs a survey on a session that is on line: sets the operating mode, tunes, walks the measurement modes
/// and puts back the one that it found. A reading that fails is a row with its error. A lost link and an
/// interruption end it early; what was not read then is there too, with the reason.
SurveyResult RunSurvey(Session& session, const Tuning& tuning, const SurveyWatcher& watcher);

/// "kelNORM"
std::string ModeName(qkel4x::KelMeasureModes mode);

}  // namespace kel4x

// The member cases as data: what tests/cases/*.toml say. The format is described in tests/cases/README.md.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace member_cases {

using CaseValue = std::variant<std::monostate, bool, std::int64_t, double, std::string>;
using Bytes = std::vector<std::uint8_t>;

/// How an event fails: the number as raised, and its description.
struct Failure {
  std::int32_t number = 0;
  std::string description;
};

/// One event of a conversation.
struct Event {
  enum class Kind { kSend, kBlock, kWait, kTimeout, kOpen, kClose, kReporting, kLogKind };
  Kind kind = Kind::kSend;
  std::string text;                  ///< of kSend
  std::optional<std::string> reply;  ///< of kSend: what comes back; a command has none
  double number = 0.0;               ///< count, seconds or log kind
  bool on = false;                   ///< of the switches; of kOpen: whether the port opens
  Bytes bytes;                       ///< of kBlock
  std::optional<Failure> failure;
};

/// What is expected of an error; a part that is not set is not compared.
struct ExpectedError {
  std::optional<std::int32_t> number;
  std::optional<std::string> source;
  std::optional<std::string> description;
};

struct Step {
  enum class Action { kGet, kPut, kCall, kSimulation, kSetting, kStatistics, kRelease };
  Action action = Action::kGet;
  std::string member;          ///< or the setting's path, or the report
  std::string interface_name;  ///< empty for the class's own
  std::vector<std::int64_t> arguments;
  CaseValue value;
  CaseValue write;  ///< of kSetting
  std::map<std::string, CaseValue> fields;
  std::optional<Bytes> buffer;
  std::optional<Bytes> buffer_after;
  std::optional<std::string> prefix;
  std::optional<std::string> response;
  std::optional<std::string> postfix;
  std::optional<double> timeout_after;
  std::vector<Event> talk;
  std::vector<std::string> log;
  std::optional<ExpectedError> error;
};

struct Case {
  std::string file;  ///< without folder and extension
  std::string name;
  int line = 0;
  std::string port = "QPort.clsEthernet";
  bool on_line = true;
  std::optional<std::int32_t> mode;  ///< one of the entries of `modes`
  bool simulation = false;
  bool log = false;
  double timeout = 5.0;
  std::vector<Step> steps;
};

/// Reads one file; a case with `modes` comes once for each entry, with the entry at the end of its name.
/// Throws std::runtime_error that names file and line of what is wrong.
std::vector<Case> ReadCases(const std::filesystem::path& file);

/// All files of a folder, in the order of their names.
std::vector<Case> ReadAllCases(const std::filesystem::path& folder);

}  // namespace member_cases

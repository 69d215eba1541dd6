// Finding, reading and formatting members through the member table.
#include "reading.h"

#include <charconv>
#include <chrono>
#include <cmath>

#include "automation/call.h"
#include "automation/enumeration_table.h"
#include "exit_code.h"
#include "host/automation_error.h"

namespace kel4x {
namespace {

using automation::ValueType;

// Whether a member gives a value of its own, so that it can be read into a table.
bool GivesValue(const automation::Member& member) {
  if (!member.Readable()) return false;
  const auto parameters = member.Parameters();
  return parameters.empty() || (parameters.size() == 1 && parameters[0].value == ValueType::kInt16);
}

// The unit as the member table has it; one that depends on a setting of the instrument is not known here.
std::string UnitOf(const automation::Member& member) {
  // A date or a duration is shown as such, not as the days that it is counted in.
  if (member.access.type.value == ValueType::kDateTime || member.unit.starts_with("as ")) return {};
  return std::string(member.unit);
}

// What the instrument says in parentheses after a number is its unit.
std::string_view UnitIn(std::string_view remark) {
  if (remark.size() < 3 || remark.front() != '(' || remark.back() != ')') return {};
  remark = remark.substr(1, remark.size() - 2);
  return remark.find_first_of("()0123456789 ") == std::string_view::npos ? remark : std::string_view{};
}

}  // namespace

std::string Target::Label() const {
  std::string label(member->name);
  if (index != 0) label += "(" + std::to_string(index) + ")";
  return label;
}

const automation::Member& FindMember(std::string_view name) {
  if (const automation::Member* member = automation::kDriverClass.Find(name)) return *member;
  throw UsageError("there is no member \"" + std::string(name.substr(0, 80)) + "\"; the nearest is " +
                   std::string(automation::kDriverClass.Nearest(name).name));
}

IndexRange IndicesOf(const automation::Member& member) {
  const auto parameters = member.Parameters();
  if (parameters.size() != 1 || parameters[0].value != ValueType::kInt16) return {};
  // The table has the range as a text, "intNumber 1 to 10".
  IndexRange range;
  const std::string_view text = member.range;
  const auto begin = text.find_first_of("0123456789");
  const auto to = text.find(" to ");
  if (begin == std::string_view::npos || to == std::string_view::npos) return {};
  std::from_chars(text.data() + begin, text.data() + text.size(), range.first);
  std::from_chars(text.data() + to + 4, text.data() + text.size(), range.last);
  return range;
}

std::vector<Target> FindTargets(std::string_view name) {
  const auto bracket = name.find('(');
  const automation::Member& member = FindMember(name.substr(0, bracket));
  if (!GivesValue(member)) {
    throw UsageError(member.access.kind == automation::Kind::kMethod
                         ? std::string(member.name) + " is a method: kel4x call " + std::string(member.name)
                         : std::string(member.name) + " cannot be read by itself" +
                               (member.name == "ScreenShot" ? ": kel4x screenshot FILE" : ""));
  }
  const IndexRange range = IndicesOf(member);
  if (bracket != std::string_view::npos) {
    std::int16_t index = 0;
    const std::string_view inner = name.substr(bracket + 1);
    const auto [end, error] = std::from_chars(inner.data(), inner.data() + inner.size(), index);
    if (error != std::errc{} || std::string_view(end, inner.data() + inner.size()) != ")") {
      throw UsageError("\"" + std::string(name) + "\": an index is a whole number, as in " +
                       std::string(member.name) + "(1)");
    }
    if (range.last == 0) throw UsageError(std::string(member.name) + " takes no index");
    // An index out of range is the driver's to refuse, except 0, which stands for none here.
    if (index == 0) {
      throw UsageError(std::string(member.name) + ": the index is " + std::to_string(range.first) + " to " +
                       std::to_string(range.last));
    }
    return {{&member, index}};
  }
  if (range.last == 0) return {{&member, 0}};
  std::vector<Target> targets;
  for (int index = range.first; index <= range.last; ++index) {
    targets.push_back({&member, static_cast<std::int16_t>(index)});
  }
  return targets;
}

Reading Read(Session& session, const Target& target) {
  Reading reading{.target = target,
                  .value = {},
                  .unit = UnitOf(*target.member),
                  .status = {},
                  .remark = {},
                  .mode = {},
                  .seconds = 0,
                  .failure = {}};
  qkel4x::clsKEL4x& driver = session.Driver();
  const auto begin = std::chrono::steady_clock::now();
  reading.failure = session.Attempt([&] {
    if (target.index != 0) {
      automation::Value index = target.index;
      reading.value = automation::Get(driver, *target.member, {&index, 1});
    } else {
      reading.value = automation::Get(driver, *target.member);
    }
  });
  reading.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  if (reading.failure) return reading;

  const ValueType type = automation::TypeOf(reading.value);
  const bool has_status = type == ValueType::kBool || type == ValueType::kInt16 ||
                          type == ValueType::kInt32 || type == ValueType::kDouble;
  if (!has_status) return reading;
  if (target.index != 0) {
    reading.status = driver.Prefix();
  } else if (session.Link().Transfers() > 0) {
    reading.status = session.Link().StatusWord();
    reading.remark = driver.Postfix();
    if (const std::string_view unit = UnitIn(reading.remark); !unit.empty()) {
      // IRREGULAR: the driver turns the kilohertz of old firmware into hertz; the remark is still the
      // instrument's.
      if (target.member->name != "MeasurePilotFreqOffset") reading.unit = unit;
      reading.remark.clear();
    }
  }
  return reading;
}

std::string DurationText(double days) {
  const auto seconds = static_cast<long long>(std::llround(days * 86400.0));
  const auto two = [](long long value) { return (value < 10 ? "0" : "") + std::to_string(value); };
  return std::to_string(seconds / 3600) + " h " + two(seconds / 60 % 60) + " min " + two(seconds % 60) + " s";
}

std::vector<std::pair<std::string, std::string>> StatisticsRows(const qkel4x::clsStatistics& statistics) {
  std::vector<std::pair<std::string, std::string>> rows;
  auto& object = const_cast<qkel4x::clsStatistics&>(statistics);  // reading through the table changes nothing
  for (const automation::Member& member : automation::kStatisticsClass.members) {
    if (!member.Readable() || member.Writable()) continue;
    const automation::Value value = automation::Get(object, member);
    const auto* duration = std::get_if<qkel4x::DateTime>(&value);
    rows.emplace_back(member.name,
                      duration != nullptr ? DurationText(duration->days) : automation::ValueText(value));
  }
  return rows;
}

std::string BareValueText(const Reading& reading) {
  if (!reading.Valid()) return {};
  const automation::Enumeration* enumeration = reading.target.member->access.type.enumeration;
  if (enumeration != nullptr && automation::TypeOf(reading.value) == ValueType::kInt32) {
    const std::int32_t number = std::get<std::int32_t>(reading.value);
    std::string name = automation::EnumeratorName(*enumeration, number);
    return name.empty() ? std::to_string(number) : name;
  }
  if (const auto* statistics = std::get_if<automation::Statistics>(&reading.value)) {
    return *statistics ? (*statistics)->Statistics() : std::string();
  }
  if (const auto* flag = std::get_if<bool>(&reading.value)) return *flag ? "yes" : "no";
  // Error ratios are read by their power of ten; the driver's own form would be a row of zeros.
  if (const auto* number = std::get_if<double>(&reading.value);
      number != nullptr && *number != 0 && std::fabs(*number) < 1e-4) {
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof digits, *number, std::chars_format::scientific);
    return {digits, end.ptr};
  }
  return automation::ValueText(reading.value);
}

std::string ValueText(const Reading& reading) {
  if (reading.failure) return {};
  if (reading.status == "---") return "---";
  std::string bare = BareValueText(reading);
  if (reading.status.empty()) return bare;
  const bool is_number = reading.target.member->access.type.enumeration == nullptr &&
                         automation::TypeOf(reading.value) != ValueType::kBool;
  if (!is_number) return bare + " (" + reading.status + ")";
  if (reading.status.size() == 1) return reading.status + bare;
  // A word that came alone left no number; the 0 that the driver reads then means nothing.
  return bare == "0" ? reading.status : reading.status + " " + bare;
}

automation::Value ParseValue(std::string_view text, const automation::Type& type, std::string_view what) {
  try {
    if (type.enumeration != nullptr) return automation::ParseEnumerator(*type.enumeration, text);
    if (type.value == ValueType::kBool) {
      if (text == "yes" || text == "on") return true;
      if (text == "no" || text == "off") return false;
    }
    return automation::Convert(std::string(text), type);
  } catch (const host::AutomationError& error) {
    throw UsageError(std::string(what) + ": " + error.Description());
  }
}

}  // namespace kel4x

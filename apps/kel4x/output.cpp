// Formatting of results.
#include "output.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "automation/call.h"
#include "automation/enumeration_table.h"
#include "exit_code.h"
#include "terminal.h"

namespace kel4x {
namespace {

using automation::ValueType;
using nlohmann::ordered_json;

std::string Dump(const ordered_json& object) {
  return object.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

ordered_json ErrorObject(const Failure& failure) {
  ordered_json error;
  error["number"] = failure.number;
  error["code"] = failure.Code();
  error["source"] = failure.source;
  error["description"] = failure.description;
  if (!failure.link.empty()) error["link"] = failure.link;
  return error;
}

ordered_json StatisticsObject(const qkel4x::clsStatistics& statistics) {
  ordered_json object;
  auto& readable =
      const_cast<qkel4x::clsStatistics&>(statistics);  // reading through the table changes nothing
  for (const automation::Member& member : automation::kStatisticsClass.members) {
    if (!member.Readable()) continue;
    const automation::Value value = automation::Get(readable, member);
    const std::string name(member.name);
    if (const auto* duration = std::get_if<qkel4x::DateTime>(&value)) {
      object[name + "Seconds"] = std::round(duration->days * 86400.0);
    } else if (const auto* number = std::get_if<double>(&value)) {
      object[name] = *number;
    } else {
      object[name] = automation::ValueText(value);
    }
  }
  return object;
}

ordered_json ValueObject(const automation::Value& value) {
  switch (automation::TypeOf(value)) {
    case ValueType::kBool:
      return std::get<bool>(value);
    case ValueType::kInt16:
      return std::get<std::int16_t>(value);
    case ValueType::kInt32:
      return std::get<std::int32_t>(value);
    case ValueType::kDouble:
      return std::get<double>(value);
    case ValueType::kStatistics: {
      const auto& statistics = std::get<automation::Statistics>(value);
      return statistics ? StatisticsObject(*statistics) : ordered_json(nullptr);
    }
    case ValueType::kNothing:
    case ValueType::kSettings:
      return nullptr;
    case ValueType::kDateTime:
    case ValueType::kText:
    case ValueType::kBytes:
      break;
  }
  return automation::ValueText(value);
}

std::string AccessText(const automation::Member& member) {
  if (member.access.kind == automation::Kind::kMethod) return "call";
  if (member.Readable() && member.Writable()) return "read/write";
  return member.Readable() ? "read" : "write";
}

}  // namespace

std::string ReadingJson(const Reading& reading) {
  ordered_json object;
  object["name"] = reading.target.member->name;
  if (reading.target.index != 0) object["index"] = reading.target.index;
  if (reading.failure) {
    object["value"] = nullptr;
    object["error"] = ErrorObject(*reading.failure);
  } else {
    object["value"] = reading.Valid() ? ValueObject(reading.value) : ordered_json(nullptr);
    if (reading.target.member->access.type.enumeration != nullptr) object["text"] = BareValueText(reading);
    if (!reading.status.empty()) object["status"] = reading.status;
    if (!reading.remark.empty()) object["remark"] = reading.remark;
  }
  if (!reading.unit.empty()) object["unit"] = reading.unit;
  if (!reading.mode.empty()) object["mode"] = reading.mode;
  object["seconds"] = std::round(reading.seconds * 1e6) / 1e6;
  return Dump(object);
}

std::string FailureJson(std::string_view name, const Failure& failure) {
  ordered_json object;
  object["name"] = name;
  object["error"] = ErrorObject(failure);
  return Dump(object);
}

std::string TextsJson(const std::vector<std::pair<std::string, std::string>>& fields) {
  ordered_json object;
  for (const auto& [name, value] : fields) object[name] = value;
  return Dump(object);
}

std::string JsonText(std::string_view text) { return Dump(ordered_json(text)); }

std::string MemberJson(const automation::Member& member) {
  static constexpr const char* kKinds[] = {"property", "indexed property", "method"};
  ordered_json object;
  object["name"] = member.name;
  object["id"] = member.id;
  object["kind"] = kKinds[static_cast<std::size_t>(member.access.kind)];
  object["access"] = AccessText(member);
  if (member.access.type.value != ValueType::kNothing)
    object["type"] = automation::TypeName(member.access.type);
  if (!member.unit.empty()) object["unit"] = member.unit;
  if (!member.range.empty()) object["range"] = member.range;
  if (!member.modes.Empty()) {
    object["modes"] = ordered_json::array();
    for (const auto& mode : automation::kEnumerators<qkel4x::KelMeasureModes>) {
      if (member.modes.Has(static_cast<qkel4x::KelMeasureModes>(mode.value)))
        object["modes"].push_back(mode.name);
    }
  }
  if (const auto* enumeration = member.access.type.enumeration) {
    object["values"] = ordered_json::object();
    for (const auto& entry : enumeration->enumerators)
      object["values"][std::string(entry.name)] = entry.value;
  }
  for (std::size_t i = 0; i < member.Parameters().size(); ++i) {
    object["arguments"].push_back(
        {{"name", member.arguments[i]}, {"type", automation::TypeName(member.Parameters()[i])}});
  }
  object["doc"] = member.doc;
  if (!member.errors.empty()) object["errors"] = member.errors;
  if (!member.oddities.empty()) object["oddities"] = member.oddities;
  if (member.hidden) object["hidden"] = true;
  return Dump(object);
}

std::string CsvField(std::string_view text) {
  if (text.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(text);
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + '"';
}

std::string CsvHeading() { return "name,index,value,unit,status,remark,mode,seconds,error,description"; }

std::string CsvLine(const Reading& reading) {
  char seconds[32];
  std::snprintf(seconds, sizeof seconds, "%.6f", reading.seconds);
  const std::string fields[] = {
      std::string(reading.target.member->name),
      reading.target.index != 0 ? std::to_string(reading.target.index) : std::string(),
      BareValueText(reading),
      reading.unit,
      reading.status,
      reading.remark,
      reading.mode,
      seconds,
      reading.failure ? std::to_string(reading.failure->Code()) : std::string(),
      reading.failure ? reading.failure->Text() : std::string()};
  std::string line;
  for (const std::string& field : fields) line.append(&field == fields ? "" : ",").append(CsvField(field));
  return line;
}

std::size_t DisplayWidth(std::string_view text) {
  // Every character that this tool prints takes one column; continuation bytes of UTF-8 take none.
  return static_cast<std::size_t>(std::count_if(
      text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

std::string Shortened(std::string_view text, std::size_t columns) {
  if (DisplayWidth(text) <= columns) return std::string(text);
  if (columns == 0) return {};
  std::size_t bytes = 0;
  for (std::size_t width = 0; bytes < text.size(); ++bytes) {
    if ((static_cast<unsigned char>(text[bytes]) & 0xC0U) == 0x80U) continue;
    if (++width == columns) break;
  }
  return std::string(text.substr(0, bytes)) + "…";
}

std::string TextTable::Text(std::size_t width, bool colour) const {
  std::vector<std::size_t> widths;
  widths.reserve(columns_.size());
  for (const auto& column : columns_) widths.push_back(DisplayWidth(column.first));
  for (const auto& row : rows_) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], DisplayWidth(row[i]));
  }
  std::string text;
  const auto add = [&](const std::vector<std::string>& row) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::string padding(widths[i] - DisplayWidth(row[i]), ' ');
      if (i > 0) line += "  ";
      line += columns_[i].second == Lean::kRight ? padding + row[i] : row[i] + padding;
    }
    const auto end = line.find_last_not_of(' ');
    line.erase(end == std::string::npos ? 0 : end + 1);
    text += width == 0 ? line : Shortened(line, width);
    text += '\n';
  };
  std::vector<std::string> heading;
  for (const auto& column : columns_) heading.push_back(column.first);
  if (colour) text += "\033[1m";
  add(heading);
  if (colour) text.insert(text.size() - 1, "\033[0m");
  for (const auto& row : rows_) add(row);
  return text;
}

void PrintLine(std::string_view line) { terminal::WriteOutput(std::string(line) + "\n"); }

void Complain(std::string_view message) {
  std::fprintf(stderr, "kel4x: %.*s\n", static_cast<int>(message.size()), message.data());
}

}  // namespace kel4x

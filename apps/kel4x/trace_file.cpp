#include "trace_file.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "exit_code.h"

namespace kel4x {
namespace {

using nlohmann::ordered_json;

constexpr std::size_t kLongestLine = 4UL * 1024UL * 1024UL;

std::string TextAt(const ordered_json& object, const char* key) {
  const auto found = object.find(key);
  return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

workbench::SettingTexts SettingsOf(const ordered_json& object) {
  workbench::SettingTexts texts;
  if (const auto settings = object.find("settings"); settings != object.end() && settings->is_object()) {
    for (const auto& [name, value] : settings->items()) {
      if (value.is_string()) texts.emplace_back(name, value.get<std::string>());
    }
  }
  return texts;
}

workbench::TraceHeader HeaderOf(const ordered_json& first) {
  workbench::TraceHeader header;
  header.program = TextAt(first, "program");
  header.version = TextAt(first, "version");
  header.resource = TextAt(first, "resource");
  if (const auto command = first.find("command"); command != first.end() && command->is_array()) {
    for (const auto& word : *command) {
      if (word.is_string()) header.command.push_back(word.get<std::string>());
    }
  }
  header.settings = SettingsOf(first);
  return header;
}

TraceEvent EventOf(const ordered_json& object) {
  static constexpr std::pair<std::string_view, TraceEvent::Direction> kDirections[] = {
      {"opened", TraceEvent::Direction::kOpened},
      {"closed", TraceEvent::Direction::kClosed},
      {"sent", TraceEvent::Direction::kSent},
      {"received", TraceEvent::Direction::kReceived},
      {"cleared", TraceEvent::Direction::kCleared}};
  const std::string direction = TextAt(object, "direction");
  TraceEvent event;
  bool known = false;
  for (const auto& [name, value] : kDirections) {
    if (direction != name) continue;
    event.direction = value;
    known = true;
  }
  if (!known) {
    throw UsageError("\"direction\" must be opened, closed, sent, received or cleared");
  }
  event.port = TextAt(object, "port");
  event.port_class = TextAt(object, "class");
  event.settings = SettingsOf(object);
  event.bytes = TextAt(object, "text");
  if (object.contains("bytes")) {
    const auto bytes = workbench::DecodeBase64(TextAt(object, "bytes"));
    if (!bytes) throw UsageError("\"bytes\" is no base64 text");
    event.bytes = *bytes;
  }
  event.block = object.contains("block");
  event.error = TextAt(object, "error");
  if (const auto number = object.find("number"); number != object.end()) {
    if (!number->is_number_integer()) throw UsageError("\"number\" must be a whole number");
    event.error_number = static_cast<std::int32_t>(number->get<std::int64_t>());
  }
  return event;
}

}  // namespace

Trace ParseTrace(std::string_view text, const std::string& name) {
  Trace trace;
  std::size_t number = 0;
  while (!text.empty()) {
    ++number;
    const auto end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.empty()) continue;
    try {
      if (line.size() > kLongestLine) throw UsageError("longer than 4 MiB");
      // The nesting is bounded by hand: the parser would follow it as deep as memory goes.
      std::size_t depth = 0;
      for (const char c : line) {
        if (c == '[' || c == '{') ++depth;
      }
      if (depth > 100'000) throw UsageError("nested too deeply");
      const ordered_json object = ordered_json::parse(line, nullptr, false);
      if (!object.is_object()) throw UsageError("is no JSON object");
      if (number == 1) {
        if (TextAt(object, "trace") != "kel4x") throw UsageError("does not begin like a recording of kel4x");
        const auto format = object.find("format");
        if (format == object.end() || *format != 1) throw UsageError("has another format than 1");
        trace.header = HeaderOf(object);
        continue;
      }
      trace.events.push_back(EventOf(object));
      trace.events.back().line = number;
    } catch (const UsageError& error) {
      throw UsageError(name + ":" + std::to_string(number) + ": " + error.what());
    }
  }
  if (number == 0) throw UsageError(name + ": is empty");
  return trace;
}

Trace ReadTrace(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw UsageError(path.string() + ": cannot be read");
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  return ParseTrace(text, path.string());
}

}  // namespace kel4x

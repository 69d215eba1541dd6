// Recordings: the writer formats by hand, since it runs between two transfers; the reader parses with care.
#include "trace_file.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstring>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "exit_code.h"

namespace kel4x {
namespace {

using nlohmann::ordered_json;

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t kLongestLine = 4UL * 1024UL * 1024UL;

void AppendDigits(std::string& out, unsigned value, unsigned width) {
  char digits[10];
  for (unsigned i = width; i-- > 0; value /= 10) digits[i] = static_cast<char>('0' + value % 10);
  out.append(digits, width);
}

bool IsPlainText(std::string_view bytes) {
  for (const char c : bytes) {
    if (static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) >= 0x7F) return false;
  }
  return true;
}

void AppendBytes(std::string& out, std::string_view bytes, bool block) {
  if (!block && IsPlainText(bytes)) {
    out += ",\"text\":";
    AppendJsonText(out, bytes);
  } else {
    out += ",\"bytes\":\"" + EncodeBase64(bytes) + '"';
    if (block) out += ",\"block\":true";
  }
}

std::string_view DirectionOf(workbench::TransferRecord::Kind kind) {
  using Kind = workbench::TransferRecord::Kind;
  switch (kind) {
    case Kind::kOpened:
      return "opened";
    case Kind::kClosed:
      return "closed";
    case Kind::kCleared:
      return "cleared";
    case Kind::kWrite:
    case Kind::kExchange:
    case Kind::kBlock:
      break;
  }
  return "received";
}

}  // namespace

void AppendJsonText(std::string& out, std::string_view text) {
  out += '"';
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      static constexpr char kHex[] = "0123456789abcdef";
      out += "\\u00";
      out += kHex[static_cast<unsigned char>(c) >> 4U];
      out += kHex[static_cast<unsigned char>(c) & 0xFU];
    } else {
      out += c;
    }
  }
  out += '"';
}

void AppendTime(std::string& out, std::chrono::system_clock::time_point time) {
  using std::chrono::duration_cast;
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const auto micros = duration_cast<std::chrono::microseconds>(time - day).count();
  const auto seconds = static_cast<unsigned>(micros / 1'000'000);
  AppendDigits(out, static_cast<unsigned>(static_cast<int>(date.year())), 4);
  out += '-';
  AppendDigits(out, static_cast<unsigned>(date.month()), 2);
  out += '-';
  AppendDigits(out, static_cast<unsigned>(date.day()), 2);
  out += 'T';
  AppendDigits(out, seconds / 3600, 2);
  out += ':';
  AppendDigits(out, seconds / 60 % 60, 2);
  out += ':';
  AppendDigits(out, seconds % 60, 2);
  out += '.';
  AppendDigits(out, static_cast<unsigned>(micros % 1'000'000), 6);
  out += 'Z';
}

std::string EncodeBase64(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const std::string_view piece = bytes.substr(at, 3);
    std::uint32_t group = 0;
    for (std::size_t i = 0; i < 3; ++i) {
      group = group << 8U | (i < piece.size() ? static_cast<unsigned char>(piece[i]) : 0U);
    }
    for (std::size_t i = 0; i < 4; ++i) {
      text += i <= piece.size() ? kAlphabet[group >> (18 - 6 * i) & 0x3FU] : '=';
    }
  }
  return text;
}

std::optional<std::string> DecodeBase64(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3);
  for (std::size_t at = 0; at < text.size(); at += 4) {
    std::uint32_t group = 0;
    std::size_t padding = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      const char c = text[at + i];
      const char* found = c == '\0' ? nullptr : std::strchr(kAlphabet, c);
      if (c == '=' && i >= 2 && at + 4 == text.size()) {
        ++padding;
      } else if (found == nullptr || padding > 0) {
        return std::nullopt;
      }
      group = group << 6U | (c == '=' ? 0U : static_cast<std::uint32_t>(found - kAlphabet));
    }
    for (std::size_t i = 0; i + padding < 3; ++i) bytes += static_cast<char>(group >> (16 - 8 * i) & 0xFFU);
  }
  return bytes;
}

TraceWriter::TraceWriter(const std::filesystem::path& path, const TraceHeader& header)
    : file_(std::fopen(path.string().c_str(), "wb")) {
  if (!file_) throw UsageError(path.string() + ": " + std::strerror(errno));
  ordered_json first;
  first["trace"] = "kel4x";
  first["format"] = 1;
  first["version"] = header.version;
  first["command"] = header.command;
  first["resource"] = header.resource;
  std::string started;
  AppendTime(started, std::chrono::system_clock::now());
  first["started"] = started;
  first["settings"] = ordered_json::object();
  for (const auto& [name, value] : header.settings) first["settings"][name] = value;
  first["secrets"] =
      "none: this file holds the command line, the settings and the traffic with the instrument";
  line_ = first.dump(-1, ' ', false, ordered_json::error_handler_t::replace) + "\n";
  Put();
  Flush();
}

void TraceWriter::Begin(const workbench::TransferRecord& record, double after, std::string_view direction) {
  line_ = "{\"time\":\"";
  AppendTime(line_, record.begin + std::chrono::duration_cast<std::chrono::system_clock::duration>(
                                       std::chrono::duration<double>(after)));
  line_ += "\",\"direction\":\"";
  line_ += direction;
  line_ += "\",\"port\":";
  AppendJsonText(line_, record.peer.empty() ? record.port : record.peer);
}

void TraceWriter::Write(const workbench::TransferRecord& record) noexcept {
  using Kind = workbench::TransferRecord::Kind;
  try {
    const bool failed = record.error_number != 0;
    if (!record.sent.empty()) {
      Begin(record, 0, "sent");
      AppendBytes(line_, record.sent, false);
      line_ += "}\n";
      // A command that goes out and is not answered is one line; so is a transfer that failed.
      if (record.kind == Kind::kWrite && !failed) return Put();
      Put();
    }
    Begin(record, record.seconds, DirectionOf(record.kind));
    if (!record.received.empty() || (!failed && record.kind == Kind::kExchange)) {
      AppendBytes(line_, record.received, record.kind == Kind::kBlock);
    }
    char digits[32];
    const auto end =
        std::to_chars(digits, digits + sizeof digits, record.seconds, std::chars_format::fixed, 6);
    line_ += ",\"duration\":";
    line_.append(digits, end.ptr);
    if (failed) {
      line_ += ",\"number\":" + std::to_string(record.error_number) + ",\"error\":";
      AppendJsonText(line_, record.error);
    }
    line_ += "}\n";
    Put();
    if (failed) Flush();
  } catch (const std::exception& failure) {
    if (lost_.empty()) lost_ = failure.what();
  }
}

void TraceWriter::Put() noexcept {
  if (!lost_.empty()) return;
  if (std::fwrite(line_.data(), 1, line_.size(), file_.get()) != line_.size()) lost_ = std::strerror(errno);
}

void TraceWriter::Flush() noexcept {
  if (lost_.empty() && std::fflush(file_.get()) != 0) lost_ = std::strerror(errno);
}

namespace {

std::string TextAt(const ordered_json& object, const char* key) {
  const auto found = object.find(key);
  return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

TraceHeader HeaderOf(const ordered_json& first) {
  TraceHeader header;
  header.version = TextAt(first, "version");
  header.resource = TextAt(first, "resource");
  if (const auto command = first.find("command"); command != first.end() && command->is_array()) {
    for (const auto& word : *command) {
      if (word.is_string()) header.command.push_back(word.get<std::string>());
    }
  }
  if (const auto settings = first.find("settings"); settings != first.end() && settings->is_object()) {
    for (const auto& [name, value] : settings->items()) {
      if (value.is_string()) header.settings.emplace_back(name, value.get<std::string>());
    }
  }
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
  event.bytes = TextAt(object, "text");
  if (object.contains("bytes")) {
    const auto bytes = DecodeBase64(TextAt(object, "bytes"));
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

// Recordings of the traffic with an instrument, one JSON object a line: writing and reading.
//
// The first line is a header: {"trace":"kel4x","format":1,"version":...,"command":[...],"resource":...,
// "started":...,"settings":{...},"secrets":"none: ..."}. Every further line is one thing that happened at a
// port:
// {"time":...,"direction":"opened"|"closed"|"sent"|"received"|"cleared","port":...} with "text", or "bytes"
// in base64 where the bytes are not plain text or belong to a block, "duration" in seconds, and "error" and
// "number" where it failed.
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "workbench/transfer_observer.h"

namespace kel4x {

/// What stands in the first line of a recording.
struct TraceHeader {
  std::string version;
  std::vector<std::string> command;  ///< the command line, without the program
  std::string resource;
  std::vector<std::pair<std::string, std::string>> settings;  ///< of the driver: path and value
};

/// Writes a recording. A write that fails, on a full disk for instance, loses lines and nothing else.
class TraceWriter {
 public:
  /// Throws a UsageError when the file cannot be made.
  TraceWriter(const std::filesystem::path& path, const TraceHeader& header);

  void Write(const workbench::TransferRecord& record) noexcept;
  /// Whether lines were lost, and the reason for the first of them.
  const std::string& Lost() const { return lost_; }
  /// Writes out what is kept back.
  void Flush() noexcept;

 private:
  struct Close {
    void operator()(FILE* file) const { std::fclose(file); }
  };

  void Begin(const workbench::TransferRecord& record, double after, std::string_view direction);
  void Put() noexcept;

  std::unique_ptr<FILE, Close> file_;
  std::string line_;  // reused
  std::string lost_;
};

/// One line of a recording.
struct TraceEvent {
  enum class Direction { kOpened, kClosed, kSent, kReceived, kCleared };

  Direction direction = Direction::kSent;
  std::string bytes;
  bool block = false;  ///< bytes of a block, not a reply line
  std::int32_t error_number = 0;
  std::string error;
  std::size_t line = 0;  ///< of the file, counted from 1
};

struct Trace {
  TraceHeader header;
  std::vector<TraceEvent> events;
};

/// Reads a recording. The file may be anything: what is no recording throws a UsageError that names the line.
Trace ReadTrace(const std::filesystem::path& path);
/// The same out of a text; `name` is for messages.
Trace ParseTrace(std::string_view text, const std::string& name);

std::string EncodeBase64(std::string_view bytes);
/// Nothing where the text is no base64.
std::optional<std::string> DecodeBase64(std::string_view text);

/// Appends a JSON text in its quotes. The bytes must be UTF-8.
void AppendJsonText(std::string& out, std::string_view text);
/// "2026-03-01T12:00:00.123456Z"
void AppendTime(std::string& out, std::chrono::system_clock::time_point time);

}  // namespace kel4x

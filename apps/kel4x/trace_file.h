// Recordings of the traffic with an instrument, as workbench/trace_writer.h describes them: the reader.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/trace_writer.h"

namespace kel4x {

/// One line of a recording.
struct TraceEvent {
  enum class Direction { kOpened, kClosed, kSent, kReceived, kCleared };

  Direction direction = Direction::kSent;
  std::string port;                  ///< who is at the other end
  std::string port_class;            ///< of an opening; empty where the recording does not say
  workbench::SettingTexts settings;  ///< of an opening, where they are there
  std::string bytes;
  bool block = false;  ///< bytes of a block, not a reply line
  std::int32_t error_number = 0;
  std::string error;
  std::size_t line = 0;  ///< of the file, counted from 1
};

struct Trace {
  workbench::TraceHeader header;
  std::vector<TraceEvent> events;
};

/// Reads a recording. The file may be anything: what is no recording throws a UsageError that names the line.
Trace ReadTrace(const std::filesystem::path& path);
/// The same out of a text; `name` is for messages.
Trace ParseTrace(std::string_view text, const std::string& name);

}  // namespace kel4x

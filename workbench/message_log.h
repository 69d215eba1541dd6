// The message log: what the driver sends and receives, one line a message, into any number of sinks.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "host/message_log.h"
#include "workbench/encoding.h"

namespace workbench {

/// One message, as the driver gave it. The texts are valid during the call of the sink only.
struct LogMessage {
  std::chrono::system_clock::time_point time;
  std::int32_t kind = 0;
  std::string_view source;
  std::string_view text;
  std::string_view detail;
};

/// Takes a message and the line made of it, which ends in a line feed. What it throws is dropped: logging
/// never fails a measurement.
using LogSink = std::function<void(const LogMessage& message, std::string_view line)>;

/// Appends lines to a file, written in large pieces and at least once a second while messages come. A file
/// that cannot be opened fails with 75; a write that fails later (a full disk) loses lines and nothing else.
LogSink FileSink(const std::filesystem::path& path);

/// Writes lines to standard error.
LogSink TerminalSink();

/// The message log of the workbench. Any thread may call any member; a sink is called by one thread at a time
/// and must not call the log.
///
/// A line reads "2026-03-01T12:00:00.123456Z KEL > READ:RF:LEVEL?": time in UTC, source tag, then ">" for a
/// sent text, "<" for a reply or the number of any other kind in brackets, then the text with control
/// characters escaped.
class MessageLog final : public host::MessageLog {
 public:
  void Append(std::int32_t kind, std::string_view source_tag, std::string_view text,
              std::string_view detail) override;
  void KindEnabled(std::int32_t kind, bool enabled) override;
  /// All kinds are on at first; kinds outside 0 to 63 always are.
  bool KindEnabled(std::int32_t kind) const;

  /// Adds a sink and returns its number, for RemoveSink.
  int AddSink(LogSink sink);
  void RemoveSink(int number);

 private:
  struct NumberedSink {
    int number;
    LogSink write;
  };

  void FormatLine(const LogMessage& message);

  std::atomic<std::uint64_t> disabled_kinds_{0};
  std::atomic<bool> has_sinks_{false};
  std::mutex mutex_;
  std::vector<NumberedSink> sinks_;
  int last_number_ = 0;
  std::string line_;  // reused: no allocation for each message
  TimeText times_;
};

}  // namespace workbench

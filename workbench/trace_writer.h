// Traces: every transfer of the ports in a file, one JSON object a line.
//
// The first line is a header: {"trace":"kel4x","format":1,"program":...,"version":...,"command":[...],
// "resource":...,"started":...,"settings":{...},"secrets":"none: ..."}; command and resource are there where
// the program gave them. Every further line is one thing that happened at a port:
// {"time":...,"direction":"opened"|"closed"|"sent"|"received"|"cleared","port":...} with "text", or "bytes"
// in base64 where the bytes are not plain text or belong to a block, "duration" in seconds, and "number" and
// "error" where it failed. An opening has "class", the programmatic name of the port, and its "settings".
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/encoding.h"
#include "workbench/parameters/parameter.h"
#include "workbench/transfer_observer.h"

namespace workbench {

/// What stands in the first line of a trace.
struct TraceHeader {
  std::string program;               ///< who records
  std::string version;               ///< of the program; empty for the version of this workbench
  std::vector<std::string> command;  ///< of kel4x, without the program: what a replay runs; may be empty
  std::string resource;              ///< the instrument; may be empty
  SettingTexts settings;             ///< of the driver; may be empty
};

/// What the environment's QKEL4X_TRACE_FILE says, for hosts that offer this to their users; empty where it is
/// not set.
std::filesystem::path TraceFileOfEnvironment();

/// Writes a trace. Any thread may call any member; each line is written whole.
///
/// Lines are kept back until 64 KiB of them have come, the last writing is 0.25 s ago when one comes, a
/// transfer fails, a port is closed, or the process ends in order. A writing that fails, on a full disk for
/// instance, ends the trace behind its last whole line and disturbs nothing else.
class TraceWriter final : public TransferObserver {
 public:
  /// Begins a trace in that file, which is emptied; "%p" in its name becomes the number of the process. While
  /// a trace goes into it, the same file is the same trace within this process, under the header that it has,
  /// and is refused to any other process. Fails with 75 where the file cannot be opened.
  static std::shared_ptr<TraceWriter> Open(const std::filesystem::path& path, const TraceHeader& header);
  ~TraceWriter() override;
  TraceWriter(const TraceWriter&) = delete;
  TraceWriter& operator=(const TraceWriter&) = delete;

  void Observe(const TransferRecord& record) noexcept override;

  /// Why lines were lost, the first reason; empty while none were.
  std::string Lost() const;
  bool HasLost() const noexcept { return has_lost_.load(std::memory_order_relaxed); }
  /// Writes out what is kept back.
  void Flush() noexcept;

  const std::filesystem::path& File() const { return path_; }

 private:
  struct Living;

  TraceWriter(std::filesystem::path path, const TraceHeader& header);

  void AppendHeader(const TraceHeader& header);
  void AppendRecord(const TransferRecord& record, std::chrono::microseconds duration);
  void BeginLine(const TransferRecord& record, std::chrono::system_clock::time_point time,
                 std::string_view direction);
  void WriteOut() noexcept;
  void Lose(std::string_view why) noexcept;
  void Lose(int error) noexcept;
  void End() noexcept;

  const std::filesystem::path path_;
  const int process_;  // a forked child must not write again what its parent has kept back
  int file_ = -1;

  mutable std::mutex mutex_;
  std::string buffer_;  // whole lines
  TimeText times_;
  std::chrono::system_clock::time_point written_out_;
  bool at_once_ = false;       // the process ends: nothing is kept back any more
  std::uint64_t in_file_ = 0;  // bytes of whole lines
  std::string lost_;
  std::atomic<bool> has_lost_{false};
};

}  // namespace workbench

#include "workbench/message_log.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <system_error>
#include <utility>

#include "host/automation_error.h"
#include "workbench/text.h"

namespace workbench {
namespace {

using std::chrono::system_clock;

constexpr std::int32_t kPathAccess = 75;
constexpr std::size_t kFileBuffer = 64UL * 1024UL;

bool HasBit(std::int32_t kind) { return kind >= 0 && kind < 64; }
std::uint64_t Bit(std::int32_t kind) { return std::uint64_t{1} << static_cast<unsigned>(kind); }

}  // namespace

LogSink FileSink(const std::filesystem::path& path) {
  const std::shared_ptr<std::FILE> file(std::fopen(path.string().c_str(), "ab"), [](std::FILE* f) {
    if (f != nullptr) std::fclose(f);
  });
  if (!file) {
    throw host::AutomationError(kPathAccess, "MessageLog",
                                "The log file " + path.string() + " cannot be opened for writing: " +
                                    std::generic_category().message(errno));
  }
  std::setvbuf(file.get(), nullptr, _IOFBF, kFileBuffer);
  return
      [file, flushed = system_clock::time_point()](const LogMessage& message, std::string_view line) mutable {
        std::fwrite(line.data(), 1, line.size(), file.get());
        if (message.time - flushed >= std::chrono::seconds(1) || message.time < flushed) {
          std::fflush(file.get());
          flushed = message.time;
        }
        if (std::ferror(file.get()) != 0) std::clearerr(file.get());
      };
}

LogSink TerminalSink() {
  return [](const LogMessage&, std::string_view line) { std::fwrite(line.data(), 1, line.size(), stderr); };
}

void MessageLog::Append(std::int32_t kind, std::string_view source_tag, std::string_view text,
                        std::string_view detail) {
  if (!has_sinks_.load(std::memory_order_relaxed) || !KindEnabled(kind)) return;
  const std::lock_guard lock(mutex_);
  const LogMessage message{system_clock::now(), kind, source_tag, text, detail};
  FormatLine(message);
  for (const NumberedSink& sink : sinks_) {
    try {
      sink.write(message, line_);
    } catch (...) {  // NOLINT(bugprone-empty-catch): a sink that fails loses the line and nothing else
    }
  }
}

void MessageLog::KindEnabled(std::int32_t kind, bool enabled) {
  if (!HasBit(kind)) return;
  if (enabled) {
    disabled_kinds_.fetch_and(~Bit(kind), std::memory_order_relaxed);
  } else {
    disabled_kinds_.fetch_or(Bit(kind), std::memory_order_relaxed);
  }
}

bool MessageLog::KindEnabled(std::int32_t kind) const {
  return !HasBit(kind) || (disabled_kinds_.load(std::memory_order_relaxed) & Bit(kind)) == 0;
}

int MessageLog::AddSink(LogSink sink) {
  const std::lock_guard lock(mutex_);
  sinks_.push_back({++last_number_, std::move(sink)});
  has_sinks_.store(true, std::memory_order_relaxed);
  return last_number_;
}

void MessageLog::RemoveSink(int number) {
  const std::lock_guard lock(mutex_);
  std::erase_if(sinks_, [number](const NumberedSink& sink) { return sink.number == number; });
  has_sinks_.store(!sinks_.empty(), std::memory_order_relaxed);
}

void MessageLog::FormatLine(const LogMessage& message) {
  line_.clear();
  times_.Append(line_, message.time);
  line_ += ' ';
  AppendVisible(line_, message.source);
  if (message.kind == host::kTextSent) {
    line_ += " > ";
  } else if (message.kind == host::kReplyReceived) {
    line_ += " < ";
  } else {
    line_ += " [";
    line_ += std::to_string(message.kind);
    line_ += "] ";
  }
  AppendVisible(line_, message.text);
  if (!message.text.empty() && !message.detail.empty()) line_ += ' ';
  AppendVisible(line_, message.detail);
  line_ += '\n';
}

}  // namespace workbench

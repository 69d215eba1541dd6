// The lines are formatted by hand into one buffer, since this runs between two transfers.
#include "workbench/trace_writer.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <share.h>
#include <sys/stat.h>
#else
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <exception>
#include <span>
#include <system_error>

#include "host/automation_error.h"

namespace workbench {
namespace {

using Clock = std::chrono::system_clock;

constexpr std::int32_t kPathAccess = 75;
constexpr std::size_t kBuffer = 64UL * 1024UL;
constexpr std::size_t kLargestKeptBuffer = 256UL * 1024UL;
constexpr std::chrono::milliseconds kKeptBack{250};

// The file ----------------------------------------------------------------------------------------

#ifdef _WIN32

int ProcessNumber() { return ::_getpid(); }
constexpr int kInUse = EACCES;

// Opens the file for this process alone, and empty; -1 with errno where that fails.
int OpenAlone(const std::filesystem::path& path) {
  int file = -1;
  const errno_t error =
      ::_wsopen_s(&file, path.c_str(), _O_WRONLY | _O_CREAT | _O_TRUNC | _O_BINARY | _O_NOINHERIT, _SH_DENYWR,
                  _S_IREAD | _S_IWRITE);
  if (error != 0) errno = error;
  return error == 0 ? file : -1;
}
std::ptrdiff_t WriteSome(int file, std::string_view bytes) {
  return ::_write(file, bytes.data(), static_cast<unsigned>(std::min<std::size_t>(bytes.size(), 1U << 30U)));
}
void Cut(int file, std::uint64_t size) { (void)::_chsize_s(file, static_cast<std::int64_t>(size)); }
void Close(int file) { ::_close(file); }

#else

int ProcessNumber() { return ::getpid(); }
constexpr int kInUse = EWOULDBLOCK;

// Opens the file for this process alone, and empty; -1 with errno where that fails.
int OpenAlone(const std::filesystem::path& path) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY, 0666);
  if (file < 0) return -1;
  struct stat about {};
  if (::fstat(file, &about) != 0 || !S_ISREG(about.st_mode)) return file;
  // A file system without locks goes without.
  if ((::flock(file, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) || ::ftruncate(file, 0) != 0) {
    const int error = errno;
    ::close(file);
    errno = error;
    return -1;
  }
  return file;
}
std::ptrdiff_t WriteSome(int file, std::string_view bytes) {
  return ::write(file, bytes.data(), bytes.size());
}
void Cut(int file, std::uint64_t size) {
  // What cannot be cut, such as a pipe, stays as it is.
  if (::ftruncate(file, static_cast<off_t>(size)) == 0) ::lseek(file, 0, SEEK_END);
}
void Close(int file) { ::close(file); }

#endif

std::filesystem::path Expanded(const std::filesystem::path& path) {
  using Text = std::filesystem::path::string_type;
  static const Text kMark = std::filesystem::path("%p").native();
  Text text = path.native();
  const Text number = std::filesystem::path(std::to_string(ProcessNumber())).native();
  for (std::size_t at = 0; (at = text.find(kMark, at)) != Text::npos; at += number.size()) {
    text.replace(at, kMark.size(), number);
  }
  return text;
}

// Texts -------------------------------------------------------------------------------------------

bool IsPlainText(std::string_view bytes) {
  return std::ranges::all_of(bytes, [](char c) { return c >= 0x20 && c < 0x7F; });
}

void AppendBytes(std::string& out, std::string_view bytes, bool block) {
  if (!block && IsPlainText(bytes)) {
    out += ",\"text\":";
    AppendJsonText(out, bytes);
    return;
  }
  out += ",\"bytes\":\"";
  AppendBase64(out, bytes);
  out += block ? "\",\"block\":true" : "\"";
}

void AppendNumber(std::string& out, std::int64_t number) {
  std::array<char, 24> digits;  // NOLINT(cppcoreguidelines-pro-type-member-init): written before it is read
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  out.append(digits.data(), end.ptr);
}

// Whole microseconds as seconds.
void AppendSeconds(std::string& out, std::int64_t micros) {
  AppendNumber(out, micros / 1'000'000);
  std::array<char, 7> digits;  // NOLINT(cppcoreguidelines-pro-type-member-init): filled at once
  digits[0] = '.';
  auto rest = static_cast<unsigned>(micros % 1'000'000);
  for (std::size_t i = digits.size(); i-- > 1; rest /= 10) digits[i] = static_cast<char>('0' + rest % 10);
  out.append(digits.data(), digits.size());
}

void AppendSettings(std::string& out, std::span<const std::pair<std::string, std::string>> settings) {
  out += ",\"settings\":{";
  for (const auto& [name, value] : settings) {
    if (out.back() != '{') out += ',';
    AppendJsonText(out, name);
    out += ':';
    AppendJsonText(out, value);
  }
  out += '}';
}

std::string_view DirectionOf(TransferRecord::Kind kind) {
  using Kind = TransferRecord::Kind;
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

std::filesystem::path TraceFileOfEnvironment() {
#ifdef _WIN32
  const wchar_t* file = ::_wgetenv(L"QKEL4X_TRACE_FILE");
#else
  const char* file = std::getenv("QKEL4X_TRACE_FILE");
#endif
  return file != nullptr ? std::filesystem::path(file) : std::filesystem::path();
}

// Opening and ending ------------------------------------------------------------------------------

// The traces of this process. Never destroyed, since a workbench may not be either: what they keep back at
// the end of the process is written by a function that runs then.
struct TraceWriter::Living {
  static Living& Instance() {
    static Living* const living = [] {
      (void)std::atexit([] {
        Living& all = Instance();
        // Where a thread was killed that held the lock, nobody waits for it.
        const std::unique_lock lock(all.mutex, std::try_to_lock);
        if (!lock) return;
        for (const auto& entry : all.writers) {
          if (const auto writer = entry.lock()) writer->End();
        }
      });
      return new Living;
    }();
    return *living;
  }

  std::mutex mutex;
  std::vector<std::weak_ptr<TraceWriter>> writers;
};

std::shared_ptr<TraceWriter> TraceWriter::Open(const std::filesystem::path& path, const TraceHeader& header) {
  std::error_code unknown;
  std::filesystem::path file = std::filesystem::absolute(Expanded(path), unknown).lexically_normal();
  if (unknown) file = Expanded(path);
  Living& living = Living::Instance();
  const std::lock_guard lock(living.mutex);
  std::erase_if(living.writers, [](const auto& entry) { return entry.expired(); });
  for (const auto& entry : living.writers) {
    auto writer = entry.lock();
    if (writer && writer->path_ == file && writer->process_ == ProcessNumber()) return writer;
  }
  std::shared_ptr<TraceWriter> made(new TraceWriter(std::move(file), header));
  living.writers.push_back(made);
  return made;
}

TraceWriter::TraceWriter(std::filesystem::path path, const TraceHeader& header)
    : path_(std::move(path)), process_(ProcessNumber()), file_(OpenAlone(path_)) {
  if (file_ < 0) {
    const int error = errno;
    std::string why = std::generic_category().message(error);
    if (error == kInUse) {
      why += " (where another process records into it, \"%p\" in the name keeps the two apart)";
    }
    throw host::AutomationError(kPathAccess, "Trace",
                                "The trace file " + path_.string() + " cannot be opened for writing: " + why);
  }
  try {
    buffer_.reserve(kBuffer + kBuffer / 8);
    AppendHeader(header);
  } catch (...) {
    Close(file_);
    throw;
  }
  WriteOut();
  written_out_ = Clock::now();
}

TraceWriter::~TraceWriter() {
  WriteOut();
  Close(file_);
}

void TraceWriter::End() noexcept {
  const std::unique_lock lock(mutex_, std::try_to_lock);
  if (!lock) return;
  at_once_ = true;
  WriteOut();
}

// Lines -------------------------------------------------------------------------------------------

void TraceWriter::AppendHeader(const TraceHeader& header) {
  buffer_ += R"({"trace":"kel4x","format":1,"program":)";
  AppendJsonText(buffer_, header.program);
  buffer_ += ",\"version\":";
  AppendJsonText(buffer_, header.version.empty() ? std::string_view(QKEL4X_VERSION) : header.version);
  if (!header.command.empty()) {
    buffer_ += ",\"command\":[";
    for (const std::string& word : header.command) {
      if (buffer_.back() != '[') buffer_ += ',';
      AppendJsonText(buffer_, word);
    }
    buffer_ += ']';
  }
  if (!header.resource.empty()) {
    buffer_ += ",\"resource\":";
    AppendJsonText(buffer_, header.resource);
  }
  buffer_ += ",\"started\":\"";
  times_.Append(buffer_, Clock::now());
  buffer_ += '"';
  AppendSettings(buffer_, header.settings);
  buffer_ +=
      ",\"secrets\":\"none: this file holds the command line, the settings and the traffic with the "
      "instrument\"}\n";
}

void TraceWriter::BeginLine(const TransferRecord& record, Clock::time_point time,
                            std::string_view direction) {
  buffer_ += "{\"time\":\"";
  times_.Append(buffer_, time);
  buffer_ += "\",\"direction\":\"";
  buffer_ += direction;
  buffer_ += "\",\"port\":";
  AppendJsonText(buffer_, record.peer.empty() ? record.port : record.peer);
}

void TraceWriter::AppendRecord(const TransferRecord& record, std::chrono::microseconds duration) {
  using Kind = TransferRecord::Kind;
  const bool failed = record.error_number != 0;
  if (!record.sent.empty()) {
    BeginLine(record, record.begin, "sent");
    AppendBytes(buffer_, record.sent, false);
    buffer_ += "}\n";
    // A command that goes out and is not answered is one line; so is a transfer that failed.
    if (record.kind == Kind::kWrite && !failed) return;
  }
  BeginLine(record, record.begin + std::chrono::duration_cast<Clock::duration>(duration),
            DirectionOf(record.kind));
  if (record.kind == Kind::kOpened) {
    buffer_ += ",\"class\":";
    AppendJsonText(buffer_, record.port);
    AppendSettings(buffer_, record.settings);
  } else if (!record.received.empty() || (!failed && record.kind == Kind::kExchange)) {
    AppendBytes(buffer_, record.received, record.kind == Kind::kBlock);
  }
  buffer_ += ",\"duration\":";
  AppendSeconds(buffer_, duration.count());
  if (failed) {
    buffer_ += ",\"number\":";
    AppendNumber(buffer_, record.error_number);
    buffer_ += ",\"error\":";
    AppendJsonText(buffer_, record.error);
  }
  buffer_ += "}\n";
}

void TraceWriter::Observe(const TransferRecord& record) noexcept {
  const std::lock_guard lock(mutex_);
  if (!lost_.empty()) return;
  const std::size_t before = buffer_.size();
  const std::chrono::microseconds duration(std::llround(std::clamp(record.seconds, 0.0, 1e9) * 1e6));
  try {
    AppendRecord(record, duration);
  } catch (const std::exception& failure) {
    buffer_.resize(before);
    WriteOut();
    Lose(failure.what());
    return;
  }
  const auto now = record.begin + std::chrono::duration_cast<Clock::duration>(duration);
  if (buffer_.size() < kBuffer && !at_once_ && record.error_number == 0 &&
      record.kind != TransferRecord::Kind::kClosed && now >= written_out_ && now - written_out_ < kKeptBack) {
    return;
  }
  WriteOut();
  written_out_ = now;
}

// Writing -----------------------------------------------------------------------------------------

void TraceWriter::WriteOut() noexcept {
  if (buffer_.empty()) return;
  if (process_ != ProcessNumber()) {
    Lose("a process that was forked from the one that records has no part in its trace");
  }
  std::string_view rest = lost_.empty() ? std::string_view(buffer_) : std::string_view();
  while (!rest.empty()) {
    const std::ptrdiff_t written = WriteSome(file_, rest);
    if (written > 0) {
      rest.remove_prefix(static_cast<std::size_t>(written));
    } else if (written == 0 || errno != EINTR) {
      Lose(written == 0 ? ENOSPC : errno);
      // What went out of a line is taken back, so that the file ends with a whole one.
      const std::size_t whole = buffer_.rfind('\n', buffer_.size() - rest.size() - 1);
      if (rest.size() < buffer_.size()) {
        Cut(file_, in_file_ + (whole == std::string::npos ? 0 : whole + 1));
      }
      rest = {};
      buffer_.clear();
    }
  }
  in_file_ += buffer_.size();
  buffer_.clear();
  if (buffer_.capacity() > kLargestKeptBuffer) std::string().swap(buffer_);
}

void TraceWriter::Flush() noexcept {
  const std::lock_guard lock(mutex_);
  WriteOut();
}

void TraceWriter::Lose(int error) noexcept {
  try {
    Lose(std::generic_category().message(error));
  } catch (const std::exception&) {
    Lose("out of memory");
  }
}

void TraceWriter::Lose(std::string_view why) noexcept {
  if (!lost_.empty()) return;
  try {
    lost_ = why;
  } catch (const std::exception&) {
    lost_ = "out of memory";  // short enough to take none
  }
  has_lost_.store(true, std::memory_order_relaxed);
}

std::string TraceWriter::Lost() const {
  const std::lock_guard lock(mutex_);
  return lost_;
}

}  // namespace workbench

// replay: runs the command of a recording again, with the recording in the place of the port, and reports the
// first thing that goes another way.
#include <algorithm>
#include <optional>
#include <utility>

#include "host/automation_error.h"
#include "host/transport.h"
#include "output.h"
#include "verbs.h"

namespace kel4x {
namespace {

// Passes through every member unchanged, so that a difference ends the run and not just one transfer.
constexpr std::int32_t kPassedThrough = 40006;

// The recording and how far it has been played.
struct Playback {
  Trace trace;
  std::string file;
  std::size_t next = 0;
  bool on_line = false;
  std::optional<std::string> difference;

  // The next event that a port plays back; cleaning up after a failed transfer, with a new connection where
  // it takes one, was the port's own affair.
  const TraceEvent* Next() {
    using Direction = TraceEvent::Direction;
    while (next < trace.events.size() && (trace.events[next].direction == Direction::kCleared ||
                                          (on_line && trace.events[next].direction == Direction::kOpened))) {
      ++next;
    }
    return next < trace.events.size() ? &trace.events[next] : nullptr;
  }

  [[noreturn]] void Differ(const std::string& now) {
    if (!difference) {
      const TraceEvent* event = Next();
      difference = event == nullptr ? file + ": the recording ends, but now " + now
                                    : file + ":" + std::to_string(event->line) + ": the recording has " +
                                          Shown(*event) + ", but now " + now;
    }
    throw host::AutomationError(kPassedThrough, "kel4x.replay", *difference);
  }

  static std::string Shown(const TraceEvent& event) {
    switch (event.direction) {
      case TraceEvent::Direction::kOpened:
        return "the port opened";
      case TraceEvent::Direction::kClosed:
        return "the port closed";
      case TraceEvent::Direction::kSent:
        return "\"" + Visible(event.bytes) + "\" sent";
      case TraceEvent::Direction::kReceived:
      case TraceEvent::Direction::kCleared:
        break;
    }
    return event.error.empty() ? "\"" + Visible(event.bytes) + "\" received" : "an error: " + event.error;
  }
};

// A port that plays a recording back. Its settings are those of the port that it stands for.
class PlaybackPort final : public host::Transport, public host::BlockTransfer {
 public:
  PlaybackPort(std::shared_ptr<host::Transport> port, std::shared_ptr<Playback> playback)
      : port_(std::move(port)), playback_(std::move(playback)) {}

  std::string Name() override { return port_->Name(); }
  void Name(std::string_view name) override { port_->Name(name); }
  std::shared_ptr<host::ParameterNode> Settings() override { return port_->Settings(); }
  bool OnLine() override { return playback_->on_line && !playback_->difference; }
  void OnLine(bool on_line) override {
    if (on_line == playback_->on_line) return;
    if (on_line) {
      const TraceEvent& event = Take(TraceEvent::Direction::kOpened, "the port is opened");
      ThrowError(event);
    } else if (const TraceEvent* event = playback_->Next();
               event != nullptr && event->direction == TraceEvent::Direction::kClosed) {
      ++playback_->next;
    }
    playback_->on_line = on_line;
  }

  float Timeout() override { return timeout_; }
  void Timeout(float seconds) override { timeout_ = seconds; }

  void Write(std::string_view command) override {
    Send(command);
    ThrowFailedSend();
  }
  void Exchange(std::string_view command, std::string* reply) override {
    Send(command);
    if (reply == nullptr) {
      ThrowFailedSend();
    } else {
      *reply = Receive(false);
    }
  }
  std::string Query(std::optional<std::string_view> command) override {
    if (command) Send(*command);
    return Receive(false);
  }

  host::BlockTransfer* Blocks() override { return this; }
  std::vector<std::uint8_t> ReadBlock(std::int16_t count, std::optional<std::string_view> command) override {
    if (command) Send(*command);
    const std::string bytes = Receive(true);
    if (bytes.size() != static_cast<std::size_t>(std::max<std::int16_t>(count, 0))) {
      playback_->Differ(std::to_string(count) + " bytes are read");
    }
    return {bytes.begin(), bytes.end()};
  }
  void WriteBlock(std::int16_t, std::span<const std::uint8_t>, std::optional<std::string_view>) override {
    playback_->Differ("a block is written");
  }

 private:
  const TraceEvent& Take(TraceEvent::Direction direction, const std::string& now) {
    const TraceEvent* event = playback_->Next();
    if (playback_->difference || event == nullptr || event->direction != direction) playback_->Differ(now);
    ++playback_->next;
    return *event;
  }

  void Send(std::string_view command) {
    const std::string now = "\"" + Visible(command) + "\" is sent";
    const TraceEvent* event = playback_->Next();
    if (event != nullptr && event->direction == TraceEvent::Direction::kSent && event->bytes != command) {
      playback_->Differ(now);
    }
    Take(TraceEvent::Direction::kSent, now);
  }

  std::string Receive(bool block) {
    const TraceEvent& event =
        Take(TraceEvent::Direction::kReceived, block ? "bytes of a block are awaited" : "a reply is awaited");
    ThrowError(event);
    return event.bytes;
  }

  // A command without a reply that failed has its error on a line of its own.
  void ThrowFailedSend() {
    const TraceEvent* event = playback_->Next();
    if (event == nullptr || event->direction != TraceEvent::Direction::kReceived) return;
    ++playback_->next;
    ThrowError(*event);
  }

  static void ThrowError(const TraceEvent& event) {
    if (event.error_number == 0) return;
    throw host::AutomationError(event.error_number, "kel4x.replay", event.error);
  }

  std::shared_ptr<host::Transport> port_;
  std::shared_ptr<Playback> playback_;
  float timeout_ = 5;
};

}  // namespace

ExitCode Replay(Run& run) {
  const std::string& file = run.arguments.words.at(0);
  auto playback = std::make_shared<Playback>();
  playback->trace = ReadTrace(file);
  playback->file = file;

  Run again;
  again.line = playback->trace.header.command;
  const auto arguments = ParseArguments(again.line);
  if (!arguments || arguments->verb == "replay" || arguments->verb == "shell") {
    throw UsageError(file + ":1: holds no command that can be replayed");
  }
  again.arguments = *arguments;
  again.arguments.trace_file.clear();
  // What the recorded command wrote is not written again.
  again.arguments.report.clear();
  if (again.arguments.csv != "-") again.arguments.csv.clear();
  again.arguments.discard = true;
  again.arguments.trace = run.arguments.trace;
  again.session.resource = ParseResource(playback->trace.header.resource);
  if (again.session.resource.port == Resource::Port::kSerial) {
    // Any line will do, since nothing goes over it.
    again.session.resource.device.clear();
    again.session.resource.comm_port = 1;
  }
  for (const auto& [name, value] : playback->trace.header.settings) {
    if (name == "Log Messages" || name == "RS232.Baud Rate") again.session.settings.emplace_back(name, value);
  }
  again.session.timeout = again.arguments.timeout;
  again.session.simulate_host = again.arguments.simulate_host;
  again.session.virtual_time = true;
  again.session.any_serial_port = true;
  again.session.replace_port = [playback](std::shared_ptr<host::Transport> port) {
    return std::make_shared<PlaybackPort>(std::move(port), playback);
  };
  try {
    RunVerb(again);
  } catch (const NoLinkError& error) {
    // A recording of a link that fails plays back as one.
    Complain(error.what());
  }

  if (!playback->difference) {
    if (const TraceEvent* event = playback->Next()) {
      playback->difference = file + ":" + std::to_string(event->line) + ": the recording goes on with " +
                             Playback::Shown(*event) + ", but now nothing more happens";
    }
  }
  if (playback->difference) {
    Complain(*playback->difference);
    if (run.arguments.json) PrintLine(TextsJson({{"difference", *playback->difference}}));
    return kRefused;
  }
  Complain(file + ": " + std::to_string(playback->trace.events.size()) + " events, no difference");
  return kDone;
}

}  // namespace kel4x

// replay: runs the command of a recording again, with the recording in the place of the port, and reports the
// first thing that goes another way.
#include <algorithm>
#include <iterator>
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

// A recording of a host program holds whatever that program did. What is played is its first connection over
// which anything went, from its opening to its closing; the driver's looks at serial ports are none.
std::vector<TraceEvent> FirstConnection(const std::vector<TraceEvent>& events, const std::string& file) {
  using Direction = TraceEvent::Direction;
  const auto sent = std::ranges::find(events, Direction::kSent, &TraceEvent::direction);
  if (sent == events.end()) throw UsageError(file + ": holds no transfer that could be replayed");
  auto from = sent;
  while (from != events.begin() && (from->direction != Direction::kOpened || from->port != sent->port))
    --from;
  if (from->direction != Direction::kOpened) {
    throw UsageError(file + ":" + std::to_string(sent->line) + ": sends before the port was opened");
  }
  std::vector<TraceEvent> connection;
  for (; from != events.end(); ++from) {
    if (from->port != sent->port) continue;
    connection.push_back(*from);
    if (from->direction == Direction::kClosed) break;
  }
  return connection;
}

// A resource of that port, for a driver that will not reach it; what the class is decides what the driver
// does.
std::string ResourceOf(const std::string& port_class) {
  if (port_class == "QPort.clsEthernet") return "TCPIP::127.0.0.1::5025::SOCKET";
  if (port_class == "QPort.clsComm") return "ASRL1::INSTR";
  if (port_class == "QPort.clsGPIB") return "GPIB0::6::INSTR";
  return "SIM";
}

// What runs: the verb of this command line, or that of the recording.
std::vector<std::string> CommandOf(const Arguments& arguments, const Trace& trace) {
  if (!arguments.command.empty()) return arguments.command;
  if (!trace.header.command.empty()) return trace.header.command;
  const std::string& file = arguments.words.front();
  throw UsageError(file + ":1: was recorded by " +
                   (trace.header.program.empty() ? "a host program" : trace.header.program) +
                   " and holds no command line; say what to run against it, as in: kel4x replay " + file +
                   " -- get MeasureRfLevel");
}

}  // namespace

ExitCode Replay(Run& run) {
  const std::string& file = run.arguments.words.at(0);
  auto playback = std::make_shared<Playback>();
  playback->trace = ReadTrace(file);
  playback->file = file;

  Run again;
  Trace& trace = playback->trace;
  again.line = CommandOf(run.arguments, trace);
  if (trace.header.command.empty()) {
    trace.events = FirstConnection(trace.events, file);
    const TraceEvent& opening = trace.events.front();
    if (trace.header.resource.empty()) trace.header.resource = ResourceOf(opening.port_class);
    std::ranges::copy(opening.settings, std::back_inserter(trace.header.settings));
  }
  const auto arguments = ParseArguments(again.line);
  if (!arguments || arguments->verb == "replay" || arguments->verb == "shell") {
    if (!run.arguments.command.empty()) throw UsageError("replay: what stands behind -- cannot be replayed");
    throw UsageError(file + ":1: holds no command that can be replayed");
  }
  again.arguments = *arguments;
  again.arguments.trace_file.clear();
  // What the recorded command wrote is not written again.
  again.arguments.report.clear();
  if (again.arguments.csv != "-") again.arguments.csv.clear();
  again.arguments.discard = true;
  again.arguments.trace = run.arguments.trace;
  again.session.resource = ParseResource(trace.header.resource);
  if (again.session.resource.port == Resource::Port::kSerial) {
    // Any line will do, since nothing goes over it.
    again.session.resource.device.clear();
    again.session.resource.comm_port = 1;
  }
  for (const auto& [name, value] : trace.header.settings) {
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

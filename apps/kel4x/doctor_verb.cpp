// doctor: each layer of the link in turn, from the resource string to a reading, and what to do about the
// first that fails.
#include <cstdio>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "output.h"
#include "terminal.h"
#include "verbs.h"
#include "workbench/ports/link.h"
#include "workbench/ports/tcp_link.h"

namespace kel4x {
namespace {

class Examination {
 public:
  explicit Examination(bool json) : json_(json), colour_(terminal::WantsColour(terminal::Stream::kOutput)) {}

  void Good(const std::string& layer, const std::string& finding) const { Tell(layer, true, finding, ""); }
  void Bad(const std::string& layer, const std::string& finding, const std::string& advice) const {
    Tell(layer, false, finding, advice);
  }

 private:
  void Tell(const std::string& layer, bool good, const std::string& finding,
            const std::string& advice) const {
    if (json_) {
      std::vector<std::pair<std::string, std::string>> fields{
          {"layer", layer}, {"result", good ? "good" : "bad"}, {"finding", finding}};
      if (!advice.empty()) fields.emplace_back("advice", advice);
      PrintLine(TextsJson(fields));
      return;
    }
    const char* colour = !colour_ ? "" : good ? "\033[32m" : "\033[31m";
    const std::string padding(layer.size() < 14 ? 14 - layer.size() : 1, ' ');
    PrintLine(std::string(colour) + (good ? "good  " : "BAD   ") + (colour_ ? "\033[0m" : "") + layer +
              padding + finding);
    if (!advice.empty()) PrintLine("      " + std::string(14, ' ') + advice);
  }

  bool json_;
  bool colour_;
};

// What the doctor sees of the bytes.
struct Seen {
  bool opened = false;
  int texts = 0;           // sent
  std::string reply;       // the end of what came back for the last text
  std::string terminator;  // of the last reply that had one
};

// An instrument has some twenty errors to tell at most, and an examination sends some thirty texts.
constexpr int kMostTexts = 200;

/// How a reply ends; empty where it does not.
std::string TerminatorOf(std::string_view reply, bool marked) {
  if (reply.ends_with("\r\n")) return "CR LF";
  if (reply.ends_with("\n\r")) return "LF CR";
  if (reply.ends_with('\n')) return "LF";
  return marked ? "the end mark of the bus" : "";
}

class ListeningLink final : public workbench::WrappedLink {
 public:
  ListeningLink(std::unique_ptr<workbench::Link> link, Seen& seen, workbench::Workbench* host)
      : WrappedLink(std::move(link)), seen_(seen), host_(host) {}

  workbench::Attempt Send(std::string_view rest) override {
    // A reply without an end is what there is to tell, whatever is sent after it.
    if (!seen_.terminator.empty()) seen_.reply.clear();
    // The driver asks for errors until there are none.
    if (++seen_.texts > kMostTexts && host_ != nullptr) host_->Interrupt();
    return WrappedLink::Send(rest);
  }
  workbench::Attempt Receive(std::span<char> into) override {
    const workbench::Attempt attempt = WrappedLink::Receive(into);
    seen_.reply.append(into.data(), attempt.bytes);
    if (seen_.reply.size() > kKept) seen_.reply.erase(0, seen_.reply.size() - kKept);
    if (attempt.bytes > 0) seen_.terminator = TerminatorOf(seen_.reply, attempt.end);
    return attempt;
  }

 private:
  static constexpr std::size_t kKept = 64;
  Seen& seen_;
  workbench::Workbench* host_;
};

std::string SettingOf(Session& session, const std::string& path) {
  return workbench::ValueText(session.Driver().Settings()->Item(path)->GetValue(-1, -1));
}

std::string DeviceOf(const Resource& resource) {
  if (!resource.device.empty()) return resource.device;
  return workbench::DefaultSerialDevices().at(static_cast<std::size_t>(resource.comm_port) - 1);
}

// The layers below an open port, told one by one once it is open.
void TellOpened(const Examination& examination, const Resource& resource) {
  switch (resource.port) {
    case Resource::Port::kTcp:
      examination.Good("name", resource.host + " is known");
      examination.Good("reachability", "the host answers");
      examination.Good("port", std::to_string(resource.tcp_port) + " is open");
      return;
    case Resource::Port::kSerial:
      examination.Good("name", DeviceOf(resource) + " is there");
      examination.Good("port", "open, and the line has all its settings");
      return;
    case Resource::Port::kGpib:
    case Resource::Port::kSimulated:
      break;
  }
  examination.Good("port", "open");
}

void TellUnopenedTcp(const Examination& examination, Session& session, const std::string& host,
                     const std::string& port) {
  using Layer = workbench::TcpLayers::Layer;
  constexpr double kSeconds = 5;
  const workbench::Deadline deadline(kSeconds, session.Host().Runtime());
  const workbench::TcpLayers layers = workbench::ExamineTcp(host, port, deadline);
  if (layers.fails == Layer::kName) {
    examination.Bad(
        "name", host + ": " + layers.why,
        "Check the spelling, and that this machine can look names up; an address needs no look-up.");
    return;
  }
  examination.Good("name", host + " is " + layers.addresses);
  if (layers.fails == Layer::kReachability) {
    examination.Bad(
        "reachability", layers.why,
        "Check that it is switched on, the cable, its address and network mask, and the firewalls.");
    return;
  }
  examination.Good("reachability", "the host answers");
  if (layers.fails == Layer::kPort) {
    examination.Bad(
        "port", layers.why,
        "The host is there, but nothing takes connections at port " + port +
            ": check the number, and that remote control is switched on; it may serve one client only.");
    return;
  }
  examination.Bad("port", "it did not open, and does now",
                  "Try again; what is there may serve one client at a time.");
}

// The first of these layers that fails is the reason why the port did not open.
void TellUnopened(const Examination& examination, const Resource& resource, Session* session,
                  const std::string& why) {
  if (resource.port == Resource::Port::kTcp && session != nullptr) {
    TellUnopenedTcp(examination, *session, resource.host, std::to_string(resource.tcp_port));
    return;
  }
  if (resource.port == Resource::Port::kSerial) {
    const std::string device = DeviceOf(resource);
    std::error_code unknown;
    // The devices of Windows are no files.
    if (device.starts_with('/') && !std::filesystem::exists(device, unknown)) {
      examination.Bad("name", device + " is not there",
                      "kel4x list shows the serial ports of this machine; is the cable plugged in?");
      return;
    }
    examination.Good("name", device);
    examination.Bad(
        "port", why,
        "Check that no other program uses it, and that you may open it (group dialout on Debian).");
    return;
  }
  if (resource.port == Resource::Port::kGpib && session != nullptr) {
    const std::string interface = SettingOf(*session, "GPIB.Interface");
    if (interface == "library") {
      examination.Bad(
          "port", why,
          "Check that the bus library is installed, and board and address (kel4x settings GPIB).");
      return;
    }
    examination.Bad(
        "port", why,
        "Check that an adapter with \"++\" commands is there (kel4x settings GPIB), and that no other "
        "program uses it.");
    return;
  }
  examination.Bad("port", why, "The simulated instrument needs nothing: please report this.");
}

std::string Milliseconds(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f ms", seconds * 1e3);
  return text;
}

}  // namespace

ExitCode Doctor(Run& run) {
  const Examination examination(run.arguments.json);
  const Resource& resource = run.session.resource;
  examination.Good("resource", resource.text + " (from " + run.resource_origin + ")");

  Seen seen;
  std::unique_ptr<Session> session;
  run.session.wrap_link = [&seen, &session](std::unique_ptr<workbench::Link> link) {
    seen.opened = true;
    return std::make_unique<ListeningLink>(std::move(link), seen, session ? &session->Host() : nullptr);
  };
  try {
    session = Prepare(run);
    examination.Good("driver", "built, settings accepted");
    seen = {};  // a driver that is created looks at the serial ports
    session->GoOnLine();
  } catch (const NoLinkError& error) {
    if (!seen.opened) {
      TellUnopened(examination, resource, session.get(), error.what());
      return kNoLink;
    }
    // A port that opened and then failed is reached, but what answers there is not this instrument.
    TellOpened(examination, resource);
    if (seen.texts > kMostTexts) {
      examination.Good("terminator", seen.terminator);
      examination.Bad(
          "error queue", "it does not empty; after " + std::to_string(kMostTexts) + " texts: " + error.what(),
          "Something else may be there: check the address. If it is the instrument, switch it off and on.");
    } else if (seen.reply.empty()) {
      examination.Bad(
          "first words", error.what(),
          "Something is there, but it does not answer as this instrument does: check the address, on a "
          "serial line also baud rate, parity and handshake (kel4x settings RS232).");
    } else if (seen.terminator.empty()) {
      examination.Bad("terminator", "a reply came without its line feed: \"" + Visible(seen.reply) + "\"",
                      "Let the instrument end its replies with LF or CR LF.");
    } else {
      examination.Bad("first words", error.what(),
                      "It answers, but not as this instrument does: check the address.");
    }
    return kNoLink;
  }
  if (seen.opened) {
    TellOpened(examination, resource);
    // The front panel says nothing while it goes on line.
    if (!seen.terminator.empty()) examination.Good("terminator", seen.terminator);
  }

  const auto step = [&](const std::string& layer, const std::string& name, const std::string& advice) {
    const Reading reading = Read(*session, {&FindMember(name), 0});
    if (reading.failure) {
      examination.Bad(layer, name + ": " + reading.failure->Text(), advice);
      return CodeOf(*reading.failure);
    }
    examination.Good(layer, name + " = " + ValueText(reading) + " " + reading.unit + " in " +
                                Milliseconds(reading.seconds));
    return kDone;
  };
  ExitCode code =
      step("identity", "Identity",
           "The instrument takes commands but does not say who it is: check that it is a KEL 40 or 43, and "
           "the terminator of the link.");
  if (code == kDone) {
    // Each exchange drains the error queue first; a reading that comes back shows that it empties.
    code = step("error queue", "SetupTime",
                "The instrument's error queue does not empty: switch it off and on.");
  }
  if (code == kDone) {
    code = step("mode", "Mode", "The instrument does not tell its operating mode.");
  }
  if (code == kDone) {
    code = step("reading", "MeasureRfLevel", "The link works, the reading does not: check the input signal.");
  }
  return code;
}

}  // namespace kel4x

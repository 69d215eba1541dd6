// doctor: each layer of the link in turn, from the resource string to a reading, and what to do about the
// first that fails.
#include <chrono>
#include <cstdio>

#include "output.h"
#include "terminal.h"
#include "verbs.h"

namespace kel4x {
namespace {

class Examination {
 public:
  explicit Examination(bool json) : json_(json), colour_(terminal::WantsColour(terminal::Stream::kOutput)) {}

  void Good(const std::string& layer, const std::string& finding) { Tell(layer, true, finding, ""); }
  void Bad(const std::string& layer, const std::string& finding, const std::string& advice) {
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

std::string Advice(const Resource& resource) {
  switch (resource.port) {
    case Resource::Port::kTcp:
      return "Check the name or address, the cable, the firewall, and that the instrument listens on port " +
             std::to_string(resource.tcp_port) + "; it may serve one client only.";
    case Resource::Port::kSerial:
      return "Check that the device is there (kel4x list), that no other program uses it, and that you may "
             "open it "
             "(group dialout on Debian).";
    case Resource::Port::kGpib:
      return "Check that the bus library is installed, and board and address (kel4x settings GPIB).";
    case Resource::Port::kSimulated:
      break;
  }
  return "The simulated instrument needs nothing: please report this.";
}

std::string Milliseconds(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f ms", seconds * 1e3);
  return text;
}

}  // namespace

ExitCode Doctor(Run& run) {
  Examination examination(run.arguments.json);
  const Resource& resource = run.session.resource;
  examination.Good("resource", resource.text + " (from " + run.resource_origin + ")");

  std::unique_ptr<Session> session;
  try {
    session = Prepare(run);
    examination.Good("driver", "built, settings accepted");
  } catch (const NoLinkError& error) {
    examination.Bad("port", error.what(), Advice(resource));
    return kNoLink;
  }
  try {
    session->GoOnLine();
  } catch (const NoLinkError& error) {
    // A port that opened and then failed is reached, but what answers there is not this instrument.
    const bool silent = session->Link().Transfers() > 1;
    examination.Bad(
        silent ? "first words" : "port", error.what(),
        silent ? "Something is there, but it does not answer as this instrument does: check the address, "
                 "on a serial line also baud rate, parity and handshake (kel4x settings RS232)."
               : Advice(resource));
    return kNoLink;
  }
  examination.Good("port", "open, and the instrument is in remote control");

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

// Going on line and off line, reset, and the end of the object.
#include "driver/clsKEL4x.h"
#include "driver/core/raise.h"
#include "host/host.h"

namespace qkel4x {
namespace {

constexpr std::string_view kOnLineSource = "clsKEL4x.OnLine";
constexpr std::int32_t kAlreadyOnLine = 2002;
constexpr std::int32_t kAlreadyOffLine = 2003;
constexpr std::int16_t kOnLineRetryLimit = 10;
constexpr float kOnLineTimeout = 5.0F;
constexpr float kOnLineWait = 1.0F;
constexpr float kResetTimeout = 100.0F;
constexpr float kResetWait = 15.0F;

/// Runs a step whose errors are dropped.
template <class Step>
void IgnoringErrors(const Step& step) {
  try {
    step();
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): that is what it is for
  }
}

}  // namespace

clsKEL4x::clsKEL4x() { BuildSettings(); }

clsKEL4x::~clsKEL4x() = default;

std::string clsKEL4x::Name() { return name_; }

void clsKEL4x::Name(std::string_view name) { name_ = name; }

std::shared_ptr<host::ParameterNode> clsKEL4x::Settings() { return settings_; }

bool clsKEL4x::OnLine() { return io_.transport != nullptr && io_.transport->OnLine(); }

void clsKEL4x::OnLine(bool on_line) {
  if (OnLine() == on_line) {
    // IRREGULAR: these two numbers carry no object-error base; hosts test for them.
    if (on_line) RaisePlain(kAlreadyOnLine, kOnLineSource, "Driver already on-line");
    RaisePlain(kAlreadyOffLine, kOnLineSource, "Driver already off-line");
  }
  if (on_line) {
    io_.transport = OpenTransport();
    if (io_.transport != nullptr) {
      try {
        io_.transport->Timeout(kOnLineTimeout);
        io_.retry_limit = 0;
        measure_mode_.valid = false;
        echo_pattern_.valid = false;
        io_.SendCommand("*CLS;*SRE 0;*ESE 0");
        io_.SendCommand("SYST:REM");
        io_.retry_limit = kOnLineRetryLimit;
      } catch (const std::exception&) {
        GoOffLine();
      }
    }
  } else {
    GoOffLine();
  }
  host::CurrentHost().Runtime().Wait(kOnLineWait);
}

std::shared_ptr<host::Transport> clsKEL4x::OpenTransport() {
  std::shared_ptr<host::Transport> transport = host::CurrentHost().CreateTransport(io_.RemoteControl());
  transport->Name(name_);
  const std::shared_ptr<host::ParameterNode> port_settings = transport->Settings();
  const std::string tree = port_settings->Name();
  for (std::size_t i = 0; i < port_settings->Count(); ++i) {
    const std::shared_ptr<host::ParameterNode> parameter = port_settings->Child(i);
    parameter->SetValue(settings_->Item(Join(tree, ".", parameter->Name()))->GetValue(-1, -1), -1, -1);
  }
  IgnoringErrors([&] { transport->OnLine(true); });
  // A port that does not open is no error: the host learns it by reading OnLine.
  if (!transport->OnLine()) transport.reset();
  return transport;
}

void clsKEL4x::GoOffLine() {
  io_.retry_limit = 0;
  IgnoringErrors([this] { io_.SendCommand("SYST:LOC"); });
  IgnoringErrors([this] { io_.Port().OnLine(false); });
  io_.transport.reset();
}

// Reset -----------------------------------------------------------------------------------------------------
void clsKEL4x::Reset() {
  static constexpr MemberTexts kTexts = MethodTexts("Reset");
  Armed(kTexts, [this] {
    echo_pattern_.valid = false;
    measure_mode_.valid = false;
    RaisedTimeout timeout(io_.Port(), kResetTimeout);
    io_.SendCommand("SYST:RES");
    timeout.Restore();
    host::CurrentHost().Runtime().Wait(kResetWait);
  });
}

}  // namespace qkel4x

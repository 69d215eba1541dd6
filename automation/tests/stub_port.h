// A driver on line over a port that answers from a list and remembers what was sent.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "driver/clsKEL4x.h"
#include "host/automation_error.h"
#include "host/host.h"
#include "workbench/workbench.h"

namespace automation_tests {

/// What the port answers and what it was sent.
struct Wire {
  std::map<std::string, std::string, std::less<>> replies{{"SYST:ERR?", "0,\"No error\""}};
  std::vector<std::string> sent;  ///< error queries left out
  bool recording = true;
  bool broken = false;  ///< every transfer fails in a way that no member completes or repeats
};

class StubPort final : public host::Transport {
 public:
  StubPort(Wire& wire, std::shared_ptr<host::ParameterNode> settings)
      : wire_(wire), settings_(std::move(settings)) {}

  std::string Name() override { return name_; }
  void Name(std::string_view name) override { name_ = name; }
  std::shared_ptr<host::ParameterNode> Settings() override { return settings_; }
  bool OnLine() override { return on_line_; }
  void OnLine(bool on_line) override { on_line_ = on_line; }
  float Timeout() override { return timeout_; }
  void Timeout(float seconds) override { timeout_ = seconds; }
  void Write(std::string_view command) override { Record(command); }
  void Exchange(std::string_view command, std::string* reply) override {
    Record(command);
    if (reply != nullptr) *reply = Reply(command);
  }
  std::string Query(std::optional<std::string_view> command) override {
    Record(command.value_or(""));
    return Reply(command.value_or(""));
  }
  host::BlockTransfer* Blocks() override { return nullptr; }

 private:
  void Record(std::string_view command) {
    if (wire_.broken) {
      throw host::AutomationError(host::kObjectErrorBase + 2014, "QPort", "the wire is cut");
    }
    if (wire_.recording && command != "SYST:ERR?") wire_.sent.emplace_back(command);
  }
  const std::string& Reply(std::string_view command) const {
    const auto reply = wire_.replies.find(command);
    if (reply == wire_.replies.end()) {
      throw host::AutomationError(host::kObjectErrorBase + host::kLinkTimeout, "QPort", "no reply is listed");
    }
    return reply->second;
  }

  Wire& wire_;
  std::shared_ptr<host::ParameterNode> settings_;
  std::string name_;
  float timeout_ = 5.0F;
  bool on_line_ = false;
};

/// The reference host in virtual time, and one driver on line over a StubPort.
class OnLineDriver {
 public:
  OnLineDriver() : bench_({.virtual_clock = true}), before_(host::SetCurrentHost(&bench_)) {
    bench_.RegisterTransport("QPort.clsEthernet", [this] {
      auto settings = bench_.CreateParameterNode();
      settings->Initialise("TCP/IP", 4, 3, "", "");
      return std::make_shared<StubPort>(wire, std::move(settings));
    });
    driver_ = std::make_unique<qkel4x::clsKEL4x>();
    driver_->Settings()->Item("Remote Control")->SetValue(std::string("QPort.clsEthernet"), -1, -1);
    driver_->Settings()->Item("Log Messages")->SetValue(std::string("No"), -1, -1);
    driver_->OnLine(true);
    wire.sent.clear();
  }
  ~OnLineDriver() {
    driver_.reset();
    host::SetCurrentHost(before_);
  }
  OnLineDriver(const OnLineDriver&) = delete;
  OnLineDriver& operator=(const OnLineDriver&) = delete;

  qkel4x::clsKEL4x& operator*() const { return *driver_; }
  qkel4x::clsKEL4x* operator->() const { return driver_.get(); }

  Wire wire;

 private:
  workbench::Workbench bench_;
  host::Host* before_;
  std::unique_ptr<qkel4x::clsKEL4x> driver_;
};

}  // namespace automation_tests

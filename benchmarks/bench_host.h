// A host for measurements: the workbench on its virtual clock, with no probe of serial ports, and where
// wanted with a port that answers within the process.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "driver/clsKEL4x.h"
#include "workbench/workbench.h"

namespace benchmarks {

/// Answers every text at once: "SYST:ERR?" with an empty error queue, everything else with one number.
class AnsweringPort final : public host::Transport {
 public:
  explicit AnsweringPort(std::shared_ptr<host::ParameterNode> settings) : settings_(std::move(settings)) {}

  std::string Name() override { return {}; }
  void Name(std::string_view) override {}
  std::shared_ptr<host::ParameterNode> Settings() override { return settings_; }
  bool OnLine() override { return on_line_; }
  void OnLine(bool on_line) override { on_line_ = on_line; }
  float Timeout() override { return timeout_; }
  void Timeout(float seconds) override { timeout_ = seconds; }
  void Write(std::string_view) override {}
  void Exchange(std::string_view, std::string* reply) override {
    if (reply != nullptr) reply->assign("-45.3");
  }
  std::string Query(std::optional<std::string_view>) override { return "0,\"No error\""; }
  host::BlockTransfer* Blocks() override { return nullptr; }

 private:
  std::shared_ptr<host::ParameterNode> settings_;
  bool on_line_ = false;
  float timeout_ = 5;
};

/// The host of this process while it lives.
class BenchHost {
 public:
  enum class Ethernet { kReal, kInProcess };

  /// With a trace where a file for it is given.
  explicit BenchHost(Ethernet ethernet, const std::filesystem::path& trace_file = {});
  ~BenchHost() { host::SetCurrentHost(before_); }
  BenchHost(const BenchHost&) = delete;
  BenchHost& operator=(const BenchHost&) = delete;

  workbench::Workbench& Get() { return workbench_; }

  /// A new driver on "QPort.clsEthernet", with "Log Messages" off. A port of 0 leaves its setting alone.
  static std::unique_ptr<qkel4x::clsKEL4x> NewDriver(std::uint16_t tcp_port = 0);
  /// The same, put on line. Fails with std::runtime_error where it does not get on line.
  static std::unique_ptr<qkel4x::clsKEL4x> NewDriverOnLine(std::uint16_t tcp_port = 0);

 private:
  workbench::Workbench workbench_;
  host::Host* before_;
};

}  // namespace benchmarks

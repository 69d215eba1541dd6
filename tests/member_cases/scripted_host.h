// A host whose four transports follow a script: every event must be the next one of the script, and what the
// script says comes back. Small on purpose: it shares nothing with the workbench.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "case_file.h"
#include "host/automation_error.h"
#include "host/host.h"

namespace member_cases {

/// A settings tree with the rules that the driver relies on: either half of an option is written, the value
/// half is read.
class ScriptedNode final : public host::ParameterNode {
 public:
  void Initialise(std::string_view name, std::int32_t code1, std::int32_t code2, std::string_view option_list,
                  std::string_view description) override;
  std::string Name() override { return name_; }
  std::shared_ptr<host::ParameterNode> Item(std::string_view path) override;
  std::size_t Count() override { return children_.size(); }
  std::shared_ptr<host::ParameterNode> Child(std::size_t position) override { return children_.at(position); }
  std::shared_ptr<host::ParameterNode> AddChild(std::string_view name, std::int32_t code1, std::int32_t code2,
                                                std::string_view option_list,
                                                std::string_view description) override;
  void AddTree(const std::shared_ptr<host::ParameterNode>& tree, std::int32_t index1,
               std::int32_t index2) override;
  bool ReadOnly() override { return read_only_; }
  void ReadOnly(bool read_only) override { read_only_ = read_only; }
  std::string OptionList() override { return option_list_; }
  void OptionList(std::string_view option_list) override { option_list_ = option_list; }
  const host::Value& GetValue(std::int32_t index1, std::int32_t index2) override;
  void SetValue(const host::Value& value, std::int32_t index1, std::int32_t index2) override;

  /// The two codes that the node was made with.
  std::array<std::int32_t, 2> codes{};
  std::string description;

 private:
  std::shared_ptr<ScriptedNode> Copy() const;

  std::string name_;
  std::string option_list_;
  host::Value value_;
  bool read_only_ = false;
  std::vector<std::shared_ptr<ScriptedNode>> children_;
};

class ScriptedHost;

class ScriptedTransport final : public host::Transport, public host::BlockTransfer {
 public:
  ScriptedTransport(ScriptedHost& owner, std::string_view class_name);
  ~ScriptedTransport() override;
  ScriptedTransport(const ScriptedTransport&) = delete;
  ScriptedTransport& operator=(const ScriptedTransport&) = delete;

  std::string Name() override { return name_; }
  void Name(std::string_view name) override { name_ = name; }
  std::shared_ptr<host::ParameterNode> Settings() override { return settings_; }
  bool OnLine() override { return on_line_; }
  void OnLine(bool on_line) override;
  float Timeout() override { return timeout_; }
  void Timeout(float seconds) override;
  void Write(std::string_view command) override;
  void Exchange(std::string_view command, std::string* reply) override;
  std::string Query(std::optional<std::string_view> command) override;
  host::BlockTransfer* Blocks() override { return this; }
  std::vector<std::uint8_t> ReadBlock(std::int16_t count, std::optional<std::string_view> command) override;
  void WriteBlock(std::int16_t format, std::span<const std::uint8_t> data,
                  std::optional<std::string_view> command) override;

  /// Sets the time-out without an event.
  void PresetTimeout(float seconds) { timeout_ = seconds; }
  /// Loses the link without an event.
  void Drop() { on_line_ = false; }

 private:
  ScriptedHost& owner_;
  std::string class_name_;
  std::string name_;
  std::shared_ptr<ScriptedNode> settings_;
  float timeout_ = 5.0F;
  bool on_line_ = false;
};

class ScriptedHost final : public host::Host,
                           private host::ErrorReporter,
                           private host::HostRuntime,
                           private host::MessageLog {
 public:
  /// Makes itself the host of this process for its life.
  ScriptedHost();
  ~ScriptedHost() override;
  ScriptedHost(const ScriptedHost&) = delete;
  ScriptedHost& operator=(const ScriptedHost&) = delete;

  host::ErrorReporter& Errors() override { return *this; }
  host::HostRuntime& Runtime() override { return *this; }
  host::MessageLog& Log() override { return *this; }
  std::shared_ptr<host::ParameterNode> CreateParameterNode() override;
  std::shared_ptr<host::Transport> CreateTransport(std::string_view class_name) override;

  /// Lets everything pass until the next Expect: error queries are answered as an empty queue, commands go,
  /// serial ports open as `serial_ports` says. What happens is kept in `events`.
  void LetPass();
  /// From here on exactly this happens.
  void Expect(std::vector<Event> script);
  /// The first event that was not the script's, or what the script still holds; empty where all agreed.
  std::string Complaint() const;

  /// The transport that was created last and still lives, or null.
  ScriptedTransport* Port() const { return port_; }

  bool simulation = false;
  bool reporting = true;
  std::set<int> serial_ports{1};
  std::set<std::string, std::less<>> unregistered;  ///< transports that cannot be created
  std::vector<std::string> log;                     ///< "6 text" and "5 text"
  std::vector<host::AutomationError> raised;        ///< what went through the error reporter
  std::vector<std::string> events;                  ///< while everything passes

 private:
  friend class ScriptedTransport;

  void Raise(std::int32_t number, std::string_view source, std::string_view description,
             std::optional<std::string_view> help_file, std::optional<std::int32_t> help_context) override;
  bool ReportingEnabled() override { return reporting; }
  void ReportingEnabled(bool enabled) override;
  bool SimulationActive() override { return simulation; }
  void Wait(float seconds) override;
  void Append(std::int32_t kind, std::string_view source_tag, std::string_view text,
              std::string_view detail) override;
  void KindEnabled(std::int32_t kind, bool enabled) override;

  // The next event of the script, which must be this one; what comes back is its reply and bytes. Fails as
  // the script says.
  Event Next(const Event& happened);

  host::Host* before_;
  ScriptedTransport* port_ = nullptr;
  bool passing_ = true;
  std::vector<Event> script_;
  std::size_t position_ = 0;
  std::string complaint_;
};

/// An event as a line of a case file has it.
std::string Line(const Event& event);

}  // namespace member_cases

// Every readable member and method, with an instrument that replies anything: each call gives a value of its
// type or an automation error. Covers the decoding of replies, choices, dates, pairs, traces, identities and
// blocks.
#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "automation/call.h"
#include "driver/clsKEL4x.h"
#include "host/automation_error.h"
#include "tests/fuzz/input.h"
#include "workbench/workbench.h"

namespace {

/// Replies with the lines of the input, and with their last line for ever. The error queue is empty.
class InputPort final : public host::Transport, public host::BlockTransfer {
 public:
  explicit InputPort(std::shared_ptr<host::ParameterNode> settings) : settings_(std::move(settings)) {}

  static inline std::string_view input;

  std::string Name() override { return {}; }
  void Name(std::string_view) override {}
  std::shared_ptr<host::ParameterNode> Settings() override { return settings_; }
  bool OnLine() override { return on_line_; }
  void OnLine(bool on_line) override { on_line_ = on_line; }
  float Timeout() override { return 5; }
  void Timeout(float) override {}
  void Write(std::string_view) override {}
  void Exchange(std::string_view, std::string* reply) override {
    if (reply != nullptr) *reply = Next();
  }
  std::string Query(std::optional<std::string_view> command) override {
    return command == "SYST:ERR?" ? "0,\"No error\"" : Next();
  }
  host::BlockTransfer* Blocks() override { return this; }
  std::vector<std::uint8_t> ReadBlock(std::int16_t count, std::optional<std::string_view>) override {
    fuzz::Require(count >= 0, "a block has no negative length");
    const std::string_view taken = input.substr(0, static_cast<std::size_t>(count));
    input.remove_prefix(taken.size());
    std::vector<std::uint8_t> bytes(taken.begin(), taken.end());
    bytes.resize(static_cast<std::size_t>(count));
    return bytes;
  }
  void WriteBlock(std::int16_t, std::span<const std::uint8_t>, std::optional<std::string_view>) override {}

 private:
  static std::string Next() {
    if (input.find('\n') != std::string_view::npos) return std::string(fuzz::TakeLine(input));
    return std::string(input);
  }

  std::shared_ptr<host::ParameterNode> settings_;
  bool on_line_ = false;
};

/// One driver for all inputs: putting one on line for each would be most of the work.
qkel4x::clsKEL4x& Driver() {
  static workbench::Workbench bench({.virtual_clock = true});
  static const std::unique_ptr<qkel4x::clsKEL4x> driver = [] {
    host::SetCurrentHost(&bench);
    for (const char* name : {"QPort.clsComm", "QPort.clsEthernet"}) {
      bench.RegisterTransport(name, [real = bench.UnregisterTransport(name)] {
        return std::make_shared<InputPort>(real()->Settings());
      });
    }
    auto made = std::make_unique<qkel4x::clsKEL4x>();
    made->Settings()->Item("Remote Control")->SetValue(std::string("QPort.clsEthernet"), -1, -1);
    made->Settings()->Item("Log Messages")->SetValue(std::string("0"), -1, -1);
    made->OnLine(true);
    fuzz::Require(made->OnLine(), "the driver gets on line");
    return made;
  }();
  return *driver;
}

/// An argument of the type that the member takes, out of a few bits of the input.
automation::Value Argument(const automation::Type& type, std::uint8_t bits) {
  using automation::Value;
  switch (type.value) {
    case automation::ValueType::kInt16:
      return Value(std::in_place_type<std::int16_t>, static_cast<std::int16_t>(bits));
    case automation::ValueType::kInt32:
      return Value(std::in_place_type<std::int32_t>, bits);
    case automation::ValueType::kBytes:
      return Value(automation::Bytes{});
    default:
      return automation::Convert({}, type);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2 || size > 70'000) return 0;
  qkel4x::clsKEL4x& driver = Driver();
  const auto& members = automation::kDriverClass.members;
  const automation::Member& member = members[data[0] % members.size()];
  InputPort::input = fuzz::Text(data + 2, size - 2);
  if (member.access.read == nullptr) return 0;
  std::vector<automation::Value> arguments;
  for (const automation::Type& type : member.Parameters()) arguments.push_back(Argument(type, data[1]));
  try {
    const automation::Value value = automation::Call(driver, member, arguments);
    fuzz::Require(automation::TypeOf(value) == member.access.type.value, "a member gives its published type");
  } catch (const host::AutomationError& error) {
    fuzz::Require(!error.Source().empty() && !error.Description().empty(), "an error says where and what");
  }
  return 0;
}

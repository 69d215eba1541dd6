// The host's objects, created by programmatic name and called by name.
#include <array>
#include <optional>

#include "host/automation_error.h"
#include "library/border.h"
#include "library/node_by_name.h"

namespace border {
namespace {

using automation::Convert;
using automation::ValueType;

Value Text(std::string_view text) { return std::string(text); }
Value Text(const std::optional<std::string_view>& text) { return text ? Text(*text) : Value(); }

template <class... Given>
Value Get(const Reference& object, const char* member, Given... given) {
  std::array<Value, sizeof...(Given)> arguments{Value(std::move(given))...};
  return Invoke(object, AUTOMATION_GET, member, arguments);
}
template <class... Given>
void Put(const Reference& object, const char* member, Given... given) {
  std::array<Value, sizeof...(Given)> arguments{Value(std::move(given))...};
  Invoke(object, AUTOMATION_PUT, member, arguments);
}
template <class... Given>
Value Call(const Reference& object, const char* member, Given... given) {
  std::array<Value, sizeof...(Given)> arguments{Value(std::move(given))...};
  return Invoke(object, AUTOMATION_CALL, member, arguments);
}

template <class T>
T As(const Value& value, ValueType type) {
  return std::get<T>(Convert(value, {.value = type}));
}
bool Flag(const Value& value) { return As<bool>(value, ValueType::kBool); }
std::string TextOf(const Value& value) { return As<std::string>(value, ValueType::kText); }
std::shared_ptr<host::ParameterNode> TreeOf(const Value& value) {
  return As<automation::Settings>(value, ValueType::kSettings);
}

/// The host's error reporter. What it raises comes back as this call's own failure.
class ReporterByName final : public host::ErrorReporter {
 public:
  void Raise(std::int32_t number, std::string_view source, std::string_view description,
             std::optional<std::string_view> help_file, std::optional<std::int32_t> help_context) override {
    Call(reporter_, "Raise", Value(number), Text(source), Text(description), Text(help_file),
         help_context ? Value(*help_context) : Value());
  }
  bool ReportingEnabled() override { return Flag(Get(reporter_, "ReportingEnabled")); }
  void ReportingEnabled(bool enabled) override { Put(reporter_, "ReportingEnabled", Value(enabled)); }

 private:
  Reference reporter_ = CreateByName("QAppInt.ErrorReporter");
};

class RuntimeByName final : public host::HostRuntime {
 public:
  bool SimulationActive() override { return Flag(Get(runtime_, "SimulationActive")); }
  void Wait(float seconds) override { Call(runtime_, "Wait", Value(double{seconds})); }

 private:
  Reference runtime_ = CreateByName("QAppInt.HostRuntime");
};

class LogByName final : public host::MessageLog {
 public:
  void Append(std::int32_t kind, std::string_view source_tag, std::string_view text,
              std::string_view detail) override {
    Call(log_, "Append", Value(kind), Text(source_tag), Text(text), Text(detail));
  }
  void KindEnabled(std::int32_t kind, bool enabled) override {
    Put(log_, "KindEnabled", Value(kind), Value(enabled));
  }

 private:
  Reference log_ = CreateByName("QAppInt.MessageLog");
};

class TransportByName final : public host::Transport, private host::BlockTransfer {
 public:
  explicit TransportByName(std::string_view class_name)
      : transport_(CreateByName(class_name)),
        blocks_(transport_.Get()->calls->query(transport_.Get(), "BlockTransfer")) {}

  std::string Name() override { return TextOf(Get(transport_, "Name")); }
  void Name(std::string_view name) override { Put(transport_, "Name", Text(name)); }
  std::shared_ptr<host::ParameterNode> Settings() override {
    if (settings_ == nullptr) settings_ = TreeOf(Get(transport_, "Settings"));
    return settings_;
  }
  bool OnLine() override { return Flag(Get(transport_, "OnLine")); }
  void OnLine(bool on_line) override { Put(transport_, "OnLine", Value(on_line)); }
  float Timeout() override {
    return static_cast<float>(As<double>(Get(transport_, "Timeout"), ValueType::kDouble));
  }
  void Timeout(float seconds) override { Put(transport_, "Timeout", Value(double{seconds})); }

  void Write(std::string_view command) override { Call(transport_, "Write", Text(command)); }
  void Exchange(std::string_view command, std::string* reply) override {
    std::array<Value, 2> arguments{Text(command), reply == nullptr ? Value() : Text(std::string_view())};
    Invoke(transport_, AUTOMATION_CALL, "Exchange", arguments);
    if (reply != nullptr) *reply = TextOf(arguments[1]);
  }
  std::string Query(std::optional<std::string_view> command) override {
    return TextOf(Call(transport_, "Query", Text(command)));
  }
  host::BlockTransfer* Blocks() override { return blocks_ ? this : nullptr; }

 private:
  std::vector<std::uint8_t> ReadBlock(std::int16_t count, std::optional<std::string_view> command) override {
    return As<automation::Bytes>(
        Call(blocks_, "ReadBlock", Value(std::in_place_type<std::int16_t>, count), Text(command)),
        ValueType::kBytes);
  }
  void WriteBlock(std::int16_t format, std::span<const std::uint8_t> data,
                  std::optional<std::string_view> command) override {
    Call(blocks_, "WriteBlock", Value(std::in_place_type<std::int16_t>, format),
         Value(automation::Bytes(data.begin(), data.end())), Text(command));
  }

  Reference transport_;
  Reference blocks_;
  std::shared_ptr<host::ParameterNode> settings_;
};

/// Made on first use, kept until the process ends.
template <class Service>
Service& Only() {
  static auto* service = new Service;
  return *service;
}

}  // namespace

Value Invoke(const Reference& object, std::int32_t access, const char* member, std::span<Value> arguments) {
  std::vector<automation_value> given;
  given.reserve(arguments.size());
  automation_value result{};
  automation_error error{};
  // What was converted is cleared on every way out.
  struct Cleared {
    std::vector<automation_value>& given;
    automation_value& result;
    ~Cleared() {
      for (automation_value& value : given) automation_clear(&value);
      automation_clear(&result);
    }
  } cleared{given, result};
  for (const Value& argument : arguments) given.push_back(ToC(argument));
  if (object.Get()->calls->invoke(object.Get(), access, member, given.data(), given.size(), &result,
                                  &error) != 0) {
    Throw(error);
  }
  for (std::size_t i = 0; i < given.size(); ++i) {
    if (given[i].type == AUTOMATION_TEXT || given[i].type == AUTOMATION_BYTES) arguments[i] = FromC(given[i]);
  }
  return FromC(result);
}

Reference CreateByName(std::string_view class_name) {
  automation_object* object = nullptr;
  automation_error error{};
  if (automation_create(std::string(class_name).c_str(), &object, &error) != 0) Throw(error);
  return Reference(object);
}

host::ErrorReporter& HostByName::Errors() { return Only<ReporterByName>(); }
host::HostRuntime& HostByName::Runtime() { return Only<RuntimeByName>(); }
host::MessageLog& HostByName::Log() { return Only<LogByName>(); }

std::shared_ptr<host::ParameterNode> HostByName::CreateParameterNode() {
  return std::make_shared<NodeByName>(CreateByName("QAppPar.ParameterNode"));
}
std::shared_ptr<host::Transport> HostByName::CreateTransport(std::string_view class_name) {
  return std::make_shared<TransportByName>(class_name);
}

void NodeByName::Initialise(std::string_view name, std::int32_t code1, std::int32_t code2,
                            std::string_view option_list, std::string_view description) {
  Call(node_, "Initialise", Text(name), Value(code1), Value(code2), Text(option_list), Text(description));
}
std::string NodeByName::Name() { return TextOf(Get(node_, "Name")); }
std::shared_ptr<host::ParameterNode> NodeByName::Item(std::string_view path) {
  return TreeOf(Get(node_, "Item", Text(path)));
}
std::size_t NodeByName::Count() {
  return static_cast<std::size_t>(As<std::int32_t>(Get(node_, "Count"), ValueType::kInt32));
}
std::shared_ptr<host::ParameterNode> NodeByName::Child(std::size_t position) {
  return TreeOf(Get(node_, "Child", Value(static_cast<std::int32_t>(position))));
}
std::shared_ptr<host::ParameterNode> NodeByName::AddChild(std::string_view name, std::int32_t code1,
                                                          std::int32_t code2, std::string_view option_list,
                                                          std::string_view description) {
  return TreeOf(
      Call(node_, "AddChild", Text(name), Value(code1), Value(code2), Text(option_list), Text(description)));
}
void NodeByName::AddTree(const std::shared_ptr<host::ParameterNode>& tree, std::int32_t index1,
                         std::int32_t index2) {
  Call(node_, "AddTree", Value(tree), Value(index1), Value(index2));
}
bool NodeByName::ReadOnly() { return Flag(Get(node_, "ReadOnly")); }
void NodeByName::ReadOnly(bool read_only) { Put(node_, "ReadOnly", Value(read_only)); }
std::string NodeByName::OptionList() { return TextOf(Get(node_, "OptionList")); }
void NodeByName::OptionList(std::string_view option_list) { Put(node_, "OptionList", Text(option_list)); }
const host::Value& NodeByName::GetValue(std::int32_t index1, std::int32_t index2) {
  value_ = Narrow(Get(node_, "Value", Value(index1), Value(index2)));
  return value_;
}
void NodeByName::SetValue(const host::Value& value, std::int32_t index1, std::int32_t index2) {
  Put(node_, "Value", Value(index1), Value(index2), Wide(value));
}

}  // namespace border

// The members of the host interfaces, as other libraries call them by name.
#include "host/automation_error.h"
#include "library/border.h"
#include "library/node_by_name.h"

namespace border {
namespace {

using automation::Convert;
using automation::ValueType;
using Arguments = std::span<Value>;

host::ParameterNode& Node(void* object) { return *static_cast<host::ParameterNode*>(object); }
host::Transport& Port(void* object) { return *static_cast<host::Transport*>(object); }
host::ErrorReporter& Reporter(void* object) { return *static_cast<host::ErrorReporter*>(object); }
host::HostRuntime& Runtime(void* object) { return *static_cast<host::HostRuntime*>(object); }
host::MessageLog& Log(void* object) { return *static_cast<host::MessageLog*>(object); }

template <class T>
T As(const Value& value, ValueType type) {
  return std::get<T>(Convert(value, {.value = type}));
}
std::string Text(const Value& value) { return As<std::string>(value, ValueType::kText); }
std::int32_t Number(const Value& value) { return As<std::int32_t>(value, ValueType::kInt32); }
std::int16_t Short(const Value& value) { return As<std::int16_t>(value, ValueType::kInt16); }
bool Flag(const Value& value) { return As<bool>(value, ValueType::kBool); }
float Seconds(const Value& value) { return static_cast<float>(As<double>(value, ValueType::kDouble)); }
bool LeftOut(const Value& value) { return automation::TypeOf(value) == ValueType::kNothing; }

/// An argument that may be left out.
struct Optional {
  std::string text;
  bool given;

  explicit Optional(const Value& value) : text(Text(value)), given(!LeftOut(value)) {}
  operator std::optional<std::string_view>() const {  // NOLINT: meant to be implicit
    return given ? std::optional<std::string_view>(text) : std::nullopt;
  }
};

host::BlockTransfer& Blocks(void* object) {
  host::BlockTransfer* blocks = Port(object).Blocks();
  if (blocks == nullptr) {
    throw host::AutomationError(host::kMemberNotFound, "QPort", "The port transfers no blocks");
  }
  return *blocks;
}

constexpr std::int32_t kGet = AUTOMATION_GET;
constexpr std::int32_t kPut = AUTOMATION_PUT;
constexpr std::int32_t kCall = AUTOMATION_CALL;

constexpr HostMember kNodeMembers[] = {
    {"Initialise", kCall, 5,
     [](void* node, Arguments given) -> Value {
       Node(node).Initialise(Text(given[0]), Number(given[1]), Number(given[2]), Text(given[3]),
                             Text(given[4]));
       return {};
     }},
    {"Name", kGet, 0, [](void* node, Arguments) -> Value { return Node(node).Name(); }},
    {"Item", kGet, 1, [](void* node, Arguments given) -> Value { return Node(node).Item(Text(given[0])); }},
    {"Count", kGet, 0,
     [](void* node, Arguments) -> Value { return static_cast<std::int32_t>(Node(node).Count()); }},
    {"Child", kGet, 1,
     [](void* node, Arguments given) -> Value {
       return Node(node).Child(static_cast<std::size_t>(Number(given[0])));
     }},
    {"AddChild", kCall, 5,
     [](void* node, Arguments given) -> Value {
       return Node(node).AddChild(Text(given[0]), Number(given[1]), Number(given[2]), Text(given[3]),
                                  Text(given[4]));
     }},
    {"AddTree", kCall, 3,
     [](void* node, Arguments given) -> Value {
       Node(node).AddTree(As<automation::Settings>(given[0], ValueType::kSettings), Number(given[1]),
                          Number(given[2]));
       return {};
     }},
    {"ReadOnly", kGet, 0, [](void* node, Arguments) -> Value { return Node(node).ReadOnly(); }},
    {"ReadOnly", kPut, 1,
     [](void* node, Arguments given) -> Value {
       Node(node).ReadOnly(Flag(given[0]));
       return {};
     }},
    {"OptionList", kGet, 0, [](void* node, Arguments) -> Value { return Node(node).OptionList(); }},
    {"OptionList", kPut, 1,
     [](void* node, Arguments given) -> Value {
       Node(node).OptionList(Text(given[0]));
       return {};
     }},
    {"Value", kGet, 2,
     [](void* node, Arguments given) -> Value {
       return Wide(Node(node).GetValue(Number(given[0]), Number(given[1])));
     }},
    {"Value", kPut, 3,
     [](void* node, Arguments given) -> Value {
       Node(node).SetValue(Narrow(given[2]), Number(given[0]), Number(given[1]));
       return {};
     }},
};

constexpr HostMember kTransportMembers[] = {
    {"Name", kGet, 0, [](void* port, Arguments) -> Value { return Port(port).Name(); }},
    {"Name", kPut, 1,
     [](void* port, Arguments given) -> Value {
       Port(port).Name(Text(given[0]));
       return {};
     }},
    {"Settings", kGet, 0, [](void* port, Arguments) -> Value { return Port(port).Settings(); }},
    {"OnLine", kGet, 0, [](void* port, Arguments) -> Value { return Port(port).OnLine(); }},
    {"OnLine", kPut, 1,
     [](void* port, Arguments given) -> Value {
       Port(port).OnLine(Flag(given[0]));
       return {};
     }},
    {"Timeout", kGet, 0, [](void* port, Arguments) -> Value { return double{Port(port).Timeout()}; }},
    {"Timeout", kPut, 1,
     [](void* port, Arguments given) -> Value {
       Port(port).Timeout(Seconds(given[0]));
       return {};
     }},
    {"Write", kCall, 1,
     [](void* port, Arguments given) -> Value {
       Port(port).Write(Text(given[0]));
       return {};
     }},
    {"Exchange", kCall, 2,
     [](void* port, Arguments given) -> Value {
       std::string reply;
       Port(port).Exchange(Text(given[0]), LeftOut(given[1]) ? nullptr : &reply);
       if (!LeftOut(given[1])) given[1] = std::move(reply);
       return {};
     }},
    {"Query", kCall, 1,
     [](void* port, Arguments given) -> Value { return Port(port).Query(Optional(given[0])); }},
    {"ReadBlock", kCall, 2,
     [](void* port, Arguments given) -> Value {
       return Blocks(port).ReadBlock(Short(given[0]), Optional(given[1]));
     }},
    {"WriteBlock", kCall, 3,
     [](void* port, Arguments given) -> Value {
       const auto data = As<automation::Bytes>(given[1], ValueType::kBytes);
       Blocks(port).WriteBlock(Short(given[0]), data, Optional(given[2]));
       return {};
     }},
};

constexpr HostMember kReporterMembers[] = {
    {"Raise", kCall, 5,
     [](void* reporter, Arguments given) -> Value {
       Reporter(reporter).Raise(
           Number(given[0]), Text(given[1]), Text(given[2]), Optional(given[3]),
           LeftOut(given[4]) ? std::optional<std::int32_t>() : std::optional(Number(given[4])));
       return {};
     }},
    {"ReportingEnabled", kGet, 0,
     [](void* reporter, Arguments) -> Value { return Reporter(reporter).ReportingEnabled(); }},
    {"ReportingEnabled", kPut, 1,
     [](void* reporter, Arguments given) -> Value {
       Reporter(reporter).ReportingEnabled(Flag(given[0]));
       return {};
     }},
};

constexpr HostMember kRuntimeMembers[] = {
    {"SimulationActive", kGet, 0,
     [](void* runtime, Arguments) -> Value { return Runtime(runtime).SimulationActive(); }},
    {"Wait", kCall, 1,
     [](void* runtime, Arguments given) -> Value {
       Runtime(runtime).Wait(Seconds(given[0]));
       return {};
     }},
};

constexpr HostMember kLogMembers[] = {
    {"Append", kCall, 4,
     [](void* log, Arguments given) -> Value {
       Log(log).Append(Number(given[0]), Text(given[1]), Text(given[2]), Text(given[3]));
       return {};
     }},
    {"KindEnabled", kPut, 2,
     [](void* log, Arguments given) -> Value {
       Log(log).KindEnabled(Number(given[0]), Flag(given[1]));
       return {};
     }},
};

}  // namespace

const HostInterface kParameterNode{"ParameterNode", kNodeMembers};
const HostInterface kTransport{"Transport", kTransportMembers};
const HostInterface kErrorReporter{"ErrorReporter", kReporterMembers};
const HostInterface kHostRuntime{"HostRuntime", kRuntimeMembers};
const HostInterface kMessageLog{"MessageLog", kLogMembers};

Value Wide(const host::Value& value) {
  return std::visit([](const auto& held) { return Value(held); }, value);
}

host::Value Narrow(const Value& value) {
  switch (automation::TypeOf(value)) {
    case ValueType::kNothing:
      return {};
    case ValueType::kBool:
      return std::get<bool>(value);
    case ValueType::kInt16:
      return std::get<std::int16_t>(value);
    case ValueType::kInt32:
      return std::get<std::int32_t>(value);
    case ValueType::kDouble:
      return std::get<double>(value);
    case ValueType::kText:
      return std::get<std::string>(value);
    default:
      throw host::AutomationError(host::kTypeMismatch, "QKEL4x", "A setting cannot hold such a value");
  }
}

}  // namespace border

// Typed calls: the member table's own method pointers, without any conversion.
#include <stdexcept>

#include "automation/member_table.h"
#include "calls.h"

namespace member_cases {
namespace {

using automation::Value;
using automation::ValueType;

// A member that is missing is the case's fault, or the table's; never the driver's.
const automation::Member& Row(const automation::Class& owner, const std::string& name) {
  const automation::Member* member = owner.Find(name);
  if (!member || member->name != name) {
    throw std::logic_error(std::string(owner.name) + " has no member " + name);
  }
  return *member;
}

struct Target {
  const automation::Class& owner;
  void* object;
};

Target TargetOf(qkel4x::clsKEL4x& driver, const std::string& interface_name) {
  if (interface_name.empty()) return {automation::kDriverClass, &driver};
  if (interface_name == "IDriverSetup") {
    return {automation::kSetupInterface, static_cast<host::IDriverSetup*>(&driver)};
  }
  if (interface_name == "IDriverIdentify") {
    return {automation::kIdentifyInterface, static_cast<host::IDriverIdentify*>(&driver)};
  }
  throw std::logic_error("no interface " + interface_name);
}

Value Exactly(const CaseValue& value, ValueType type) {
  const auto* whole = std::get_if<std::int64_t>(&value);
  const auto* real = std::get_if<double>(&value);
  switch (type) {
    case ValueType::kBool:
      return std::get<bool>(value);
    case ValueType::kInt16:
      return static_cast<std::int16_t>(std::get<std::int64_t>(value));
    case ValueType::kInt32:
      return static_cast<std::int32_t>(std::get<std::int64_t>(value));
    case ValueType::kDouble:
      return real ? *real : static_cast<double>(*whole);
    case ValueType::kDateTime:
      return qkel4x::DateTime{real ? *real : static_cast<double>(*whole)};
    case ValueType::kText:
      return std::get<std::string>(value);
    default:
      throw std::logic_error("no case writes such a value");
  }
}

class Typed final : public CallsInProcess {
 public:
  Value Get(const std::string& interface_name, const std::string& member,
            std::span<Value> arguments) override {
    const Target target = TargetOf(Driver(), interface_name);
    const automation::Member& row = Row(target.owner, member);
    if (row.Parameters().size() != arguments.size())
      throw std::logic_error(member + ": wrong argument count");
    for (std::size_t i = 0; i < arguments.size(); ++i) {
      const auto* whole = std::get_if<std::int32_t>(&arguments[i]);
      if (whole && row.Parameters()[i].value == ValueType::kInt16) {
        arguments[i] = static_cast<std::int16_t>(*whole);
      }
    }
    return row.Get(target.object, arguments);
  }

  void Put(const std::string& interface_name, const std::string& member, const CaseValue& value) override {
    const Target target = TargetOf(Driver(), interface_name);
    const automation::Member& row = Row(target.owner, member);
    if (!row.Writable()) throw std::logic_error(member + " cannot be written");
    row.Put(target.object, Exactly(value, row.access.type.value));
  }

  void Call(const std::string& member) override {
    const automation::Member& row = Row(automation::kDriverClass, member);
    if (row.access.kind != automation::Kind::kMethod) throw std::logic_error(member + " is no method");
    row.Get(&Driver());
  }

  Value GetField(qkel4x::clsStatistics& statistics, const std::string& member) override {
    return Row(automation::kStatisticsClass, member).Get(&statistics);
  }

  void WriteStatistics(qkel4x::clsStatistics& statistics, const std::string& report) override {
    Row(automation::kStatisticsClass, "Statistics").Put(&statistics, report);
  }
};

}  // namespace

Calls& TypedCalls() {
  static Typed calls;
  return calls;
}

}  // namespace member_cases

#include "automation/call.h"

#include <string>

#include "automation/names.h"
#include "driver/clsKEL4x.h"
#include "driver/core/number_text.h"
#include "driver/core/raise.h"
#include "driver/settings/clsRegister.h"
#include "driver/statistics/clsStatistics.h"
#include "host/automation_error.h"

namespace automation {
namespace {

using host::AutomationError;
using qkel4x::Join;

constexpr std::int32_t kPropertyWriteOnly = 394;

[[noreturn]] void Refuse(std::int32_t number, const Class& in, const Member& member,
                         std::string_view reason) {
  throw AutomationError(number, Join(in.name, ".", member.name),
                        Join(in.name, ".", member.name, " ", reason));
}

[[noreturn]] void RefuseUnknown(const Class& in, std::string_view name) {
  std::string text = Join(in.name, " has no member ", name, "; the nearest is ", in.Nearest(name).name);
  for (const Class* other : AllClasses()) {
    if (const Member* found = other == &in ? nullptr : other->Find(name)) {
      text += Join("; ", other->name, " has a member ", found->name);
      break;
    }
  }
  throw AutomationError(host::kMemberNotFound, std::string(in.name), text);
}

std::string Expected(const Member& member) {
  const std::span<const Type> parameters = member.Parameters();
  if (parameters.empty()) return "takes no arguments";
  std::string text = parameters.size() == 1 ? "takes 1 argument: " : "takes 2 arguments: ";
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    text += Join(i == 0 ? "" : ", ", member.arguments[i], " (", TypeName(parameters[i]), ")");
  }
  return text;
}

/// The conversion of one value, with a fault that says where it belongs.
Value ConvertFor(const Class& in, const Member& member, std::string_view what, const Value& value,
                 const Type& type) {
  try {
    return Convert(value, type);
  } catch (const AutomationError& fault) {
    Refuse(fault.Number(), in, member, Join(what, ": ", fault.Description()));
  }
}

Value Run(const Object& object, const Member& member, std::span<Value> arguments) {
  const std::span<const Type> parameters = member.Parameters();
  if (arguments.size() != parameters.size()) {
    Refuse(
        host::kWrongArgumentCount, object.SeenAs(), member,
        Join(Expected(member), "; got ", qkel4x::DecimalText(static_cast<std::int32_t>(arguments.size()))));
  }
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (TypeOf(arguments[i]) != parameters[i].value) {
      arguments[i] = ConvertFor(object.SeenAs(), member, member.arguments[i], arguments[i], parameters[i]);
    }
  }
  return member.access.read(object.Address(), arguments);
}

}  // namespace

Object::Object(qkel4x::clsKEL4x& driver) : Object(kDriverClass, &driver) {}
Object::Object(qkel4x::clsStatistics& statistics) : Object(kStatisticsClass, &statistics) {}
Object::Object(qkel4x::clsRegister& names) : Object(kRegisterClass, &names) {}
Object::Object(host::IDriverSetup& setup) : Object(kSetupInterface, &setup) {}
Object::Object(host::IDriverIdentify& identify) : Object(kIdentifyInterface, &identify) {}
Object::Object(host::IRegister& names) : Object(kRegisterInterface, &names) {}

const Member& Lookup(const Class& in, std::string_view name) {
  const Member* member = in.Find(name);
  if (member == nullptr) RefuseUnknown(in, name);
  return *member;
}

Value Get(const Object& object, const Member& member, std::span<Value> arguments) {
  if (member.access.kind == Kind::kMethod) {
    Refuse(host::kMemberNotFound, object.SeenAs(), member, "is a method: it is called, not read");
  }
  if (member.access.read == nullptr) {
    Refuse(kPropertyWriteOnly, object.SeenAs(), member, "can be written but not read");
  }
  return Run(object, member, arguments);
}

Value Get(const Object& object, std::string_view name, std::span<Value> arguments) {
  return Get(object, Lookup(object.SeenAs(), name), arguments);
}

void Put(const Object& object, const Member& member, const Value& value) {
  if (member.access.kind == Kind::kMethod) {
    Refuse(host::kMemberNotFound, object.SeenAs(), member, "is a method: it is called, not written");
  }
  if (member.access.write == nullptr) {
    Refuse(host::kPropertyReadOnly, object.SeenAs(), member, "is read-only");
  }
  Value converted = TypeOf(value) == member.access.type.value
                        ? value
                        : ConvertFor(object.SeenAs(), member, "value", value, member.access.type);
  member.access.write(object.Address(), {&converted, 1});
}

void Put(const Object& object, std::string_view name, const Value& value) {
  Put(object, Lookup(object.SeenAs(), name), value);
}

Value Call(const Object& object, const Member& member, std::span<Value> arguments) {
  return member.access.kind == Kind::kMethod ? Run(object, member, arguments)
                                             : Get(object, member, arguments);
}

Value Call(const Object& object, std::string_view name, std::span<Value> arguments) {
  return Call(object, Lookup(object.SeenAs(), name), arguments);
}

Instance Create(std::string_view program_id) {
  const auto same = [program_id](std::string_view name) { return SameName(program_id, name); };
  if (same(kDriverClass.program_id)) return {&kDriverClass, std::make_shared<qkel4x::clsKEL4x>()};
  if (same(kRegisterClass.program_id)) return {&kRegisterClass, std::make_shared<qkel4x::clsRegister>()};
  if (same(kStatisticsClass.program_id))
    return {&kStatisticsClass, std::make_shared<qkel4x::clsStatistics>()};

  std::string offered;
  for (const Class* known : AllClasses()) {
    if (!known->program_id.empty()) offered += Join(offered.empty() ? "" : ", ", known->program_id);
  }
  throw AutomationError(host::kCannotCreateObject, "QKEL4x",
                        Join("There is no class ", program_id, "; there are ", offered));
}

}  // namespace automation

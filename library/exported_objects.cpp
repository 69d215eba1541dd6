// Objects of this library as the C side sees them.
#include <atomic>

#include "automation/names.h"
#include "driver/clsKEL4x.h"
#include "driver/core/number_text.h"
#include "driver/core/raise.h"
#include "driver/settings/clsRegister.h"
#include "host/automation_error.h"
#include "library/border.h"
#include "library/node_by_name.h"

namespace border {
namespace {

std::atomic<std::int32_t> living_objects{0};

/// An object with its count of references. What it is called on is the derived class's.
class Exported : public automation_object {
 public:
  Exported() : automation_object{&kCalls} { ++living_objects; }
  virtual ~Exported() { --living_objects; }
  Exported(const Exported&) = delete;
  Exported& operator=(const Exported&) = delete;

  virtual Value Run(std::int32_t access, std::string_view member, std::span<Value> arguments) = 0;
  /// The new object that a class object makes; null for anything else.
  virtual Reference Create(std::string_view /*member*/) { return {}; }
  virtual Exported* Query(std::string_view /*interface_name*/) { return nullptr; }
  /// The node that is exported; null for anything else.
  virtual std::shared_ptr<host::ParameterNode> Node() const { return nullptr; }

  void Retain() { ++references_; }
  void Release() {
    if (--references_ == 0) delete this;
  }

  /// The object behind a call that came through this library's own calls.
  static Exported& Self(automation_object* object) { return static_cast<Exported&>(*object); }
  /// The object where it is this library's; null for another's.
  static Exported* Of(automation_object* object) {
    return object->calls == &kCalls ? &Self(object) : nullptr;
  }

 private:
  static const automation_calls kCalls;
  std::atomic<std::int32_t> references_{1};
};

std::int32_t Invoke(automation_object* object, std::int32_t access, const char* member,
                    automation_value* arguments, std::size_t count, automation_value* result,
                    automation_error* error) noexcept {
  *result = {};
  *error = {};
  try {
    if (Reference made = Exported::Self(object).Create(member)) {
      result->type = AUTOMATION_OBJECT;
      result->as.object = made.Release();
      return 0;
    }
    std::vector<Value> values;
    values.reserve(count);
    for (std::size_t i = 0; i < count; ++i) values.push_back(FromC(arguments[i]));
    const Value returned = Exported::Self(object).Run(access, member, values);
    for (std::size_t i = 0; i < count; ++i) {
      // Only texts and bytes are ever replaced by a call.
      if (const automation::ValueType type = automation::TypeOf(values[i]);
          type == automation::ValueType::kText || type == automation::ValueType::kBytes) {
        const automation_value replaced = ToC(values[i]);
        automation_clear(&arguments[i]);
        arguments[i] = replaced;
      }
    }
    *result = ToC(returned);
    return 0;
  } catch (...) {
    CatchInto(*error);
    return 1;
  }
}

const automation_calls Exported::kCalls{
    [](automation_object* object) { Self(object).Retain(); },
    [](automation_object* object) { Self(object).Release(); },
    [](automation_object* object, const char* interface_name) -> automation_object* {
      return Self(object).Query(interface_name);
    },
    &Invoke,
};

[[noreturn]] void RefuseMember(std::string_view class_name, std::string_view member) {
  throw host::AutomationError(host::kMemberNotFound, std::string(class_name),
                              qkel4x::Join(class_name, " has no such use of a member ", member));
}

/// A published class or one of its interfaces.
class ExportedInstance final : public Exported {
 public:
  ExportedInstance(automation::Instance instance, automation::Object seen_as)
      : instance_(std::move(instance)), seen_as_(seen_as) {}

  Value Run(std::int32_t access, std::string_view member, std::span<Value> arguments) override {
    switch (access) {
      case AUTOMATION_GET:
        return automation::Get(seen_as_, member, arguments);
      case AUTOMATION_CALL:
        return automation::Call(seen_as_, member, arguments);
      case AUTOMATION_PUT:
        if (arguments.size() == 1) {
          automation::Put(seen_as_, member, arguments[0]);
          return {};
        }
        throw host::AutomationError(host::kWrongArgumentCount, std::string(seen_as_.SeenAs().name),
                                    "A write takes one value");
      default:
        RefuseMember(seen_as_.SeenAs().name, member);
    }
  }

  Exported* Query(std::string_view interface_name) override {
    const auto as = [&](const automation::Class& published) {
      return automation::SameName(interface_name, published.name);
    };
    if (as(*instance_.seen_as)) return new ExportedInstance(instance_, instance_);
    if (instance_.seen_as == &automation::kDriverClass) {
      auto& driver = *static_cast<qkel4x::clsKEL4x*>(instance_.object.get());
      if (as(automation::kSetupInterface)) {
        return new ExportedInstance(instance_, static_cast<host::IDriverSetup&>(driver));
      }
      if (as(automation::kIdentifyInterface)) {
        return new ExportedInstance(instance_, static_cast<host::IDriverIdentify&>(driver));
      }
    }
    if (instance_.seen_as == &automation::kRegisterClass && as(automation::kRegisterInterface)) {
      auto& names = *static_cast<qkel4x::clsRegister*>(instance_.object.get());
      return new ExportedInstance(instance_, static_cast<host::IRegister&>(names));
    }
    return nullptr;
  }

 private:
  automation::Instance instance_;
  automation::Object seen_as_;
};

/// An object of the host.
class ExportedHostObject final : public Exported {
 public:
  ExportedHostObject(const HostInterface& seen_as, std::shared_ptr<void> object,
                     std::shared_ptr<host::ParameterNode> node = {})
      : seen_as_(seen_as), object_(std::move(object)), node_(std::move(node)) {}

  Value Run(std::int32_t access, std::string_view member, std::span<Value> arguments) override {
    const HostMember* other_count = nullptr;
    for (const HostMember& known : seen_as_.members) {
      if (known.access != access || !automation::SameName(known.name, member)) continue;
      if (known.arguments == arguments.size()) return known.run(object_.get(), arguments);
      other_count = &known;
    }
    if (other_count == nullptr) RefuseMember(seen_as_.name, member);
    throw host::AutomationError(
        host::kWrongArgumentCount, std::string(seen_as_.name),
        qkel4x::Join(seen_as_.name, ".", member, " takes ",
                     qkel4x::DecimalText(static_cast<std::int32_t>(other_count->arguments)),
                     " arguments; got ", qkel4x::DecimalText(static_cast<std::int32_t>(arguments.size()))));
  }

  Exported* Query(std::string_view interface_name) override {
    if (automation::SameName(interface_name, seen_as_.name)) return Again();
    if (&seen_as_ == &kTransport) {
      if (automation::SameName(interface_name, "IDriverSetup")) return Again();
      if (automation::SameName(interface_name, "BlockTransfer") &&
          static_cast<host::Transport*>(object_.get())->Blocks() != nullptr) {
        return Again();
      }
    }
    return nullptr;
  }

  std::shared_ptr<host::ParameterNode> Node() const override { return node_; }

 private:
  Exported* Again() {
    Retain();
    return this;
  }

  const HostInterface& seen_as_;
  std::shared_ptr<void> object_;
  std::shared_ptr<host::ParameterNode> node_;
};

class ExportedClass final : public Exported {
 public:
  ExportedClass(Reference (*make)(const void*), const void* context) : make_(make), context_(context) {}

  Value Run(std::int32_t /*access*/, std::string_view member, std::span<Value> /*arguments*/) override {
    RefuseMember("The class object", member);
  }
  Reference Create(std::string_view member) override {
    return automation::SameName(member, "CreateInstance") ? make_(context_) : Reference();
  }

 private:
  Reference (*make_)(const void*);
  const void* context_;
};

}  // namespace

std::int32_t LivingObjects() { return living_objects.load(); }

Reference Show(automation::Instance instance) {
  const automation::Object seen_as = instance;
  return Reference(new ExportedInstance(std::move(instance), seen_as));
}

Reference Show(const HostInterface& seen_as, std::shared_ptr<void> object) {
  return Reference(new ExportedHostObject(seen_as, std::move(object)));
}

Reference Show(const std::shared_ptr<host::ParameterNode>& node) {
  if (const auto* foreign = dynamic_cast<const NodeByName*>(node.get())) return foreign->Object();
  return Reference(new ExportedHostObject(kParameterNode, node, node));
}

Reference Show(const std::shared_ptr<host::Transport>& transport) { return Show(kTransport, transport); }

Reference ShowClass(Reference (*make)(const void* context), const void* context) {
  return Reference(new ExportedClass(make, context));
}

std::shared_ptr<host::ParameterNode> NodeOf(automation_object* object) {
  if (const Exported* own = Exported::Of(object)) {
    if (auto node = own->Node()) return node;
    throw host::AutomationError(host::kTypeMismatch, "QKEL4x", "The object is no parameter node");
  }
  object->calls->retain(object);
  return std::make_shared<NodeByName>(Reference(object));
}

}  // namespace border

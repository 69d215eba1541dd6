// Values, errors and objects on their way over the border between C++ and the plain C of
// host/class_factory.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "automation/call.h"
#include "automation/value.h"
#include "host/class_factory.h"
#include "host/host.h"

namespace border {

using automation::Value;

/// One reference to an object of the C side.
class Reference {
 public:
  Reference() = default;
  /// Takes over a reference.
  explicit Reference(automation_object* object) : object_(object) {}
  Reference(const Reference& other) : object_(other.object_) {
    if (object_ != nullptr) object_->calls->retain(object_);
  }
  Reference(Reference&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Reference& operator=(Reference other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Reference() {
    if (object_ != nullptr) object_->calls->release(object_);
  }

  explicit operator bool() const { return object_ != nullptr; }
  automation_object* Get() const { return object_; }
  /// Hands the reference over.
  automation_object* Release() { return std::exchange(object_, nullptr); }

 private:
  automation_object* object_ = nullptr;
};

/// The value for the C side, which owns it from then on.
automation_value ToC(const Value& value);
/// The value from the C side, which keeps its own.
Value FromC(const automation_value& value);
/// Keeps what is being caught for the C side. Call it in a catch block.
void CatchInto(automation_error& error) noexcept;
/// Throws the error and clears it.
[[noreturn]] void Throw(automation_error& error);

// Objects of this library, shown to the C side.

/// How many objects of this library the C side holds.
std::int32_t LivingObjects();

/// One member of a host interface: how it is reached and with how many arguments. A written value is the last
/// one.
struct HostMember {
  std::string_view name;
  std::int32_t access;
  std::size_t arguments;
  Value (*run)(void* object, std::span<Value> arguments);
};

/// A host interface as its members; `blocks` where "BlockTransfer" can be queried.
struct HostInterface {
  std::string_view name;
  std::span<const HostMember> members;
};

extern const HostInterface kParameterNode;
extern const HostInterface kTransport;
extern const HostInterface kErrorReporter;
extern const HostInterface kHostRuntime;
extern const HostInterface kMessageLog;

Reference Show(automation::Instance instance);
/// A node of the C side comes out as itself.
Reference Show(const std::shared_ptr<host::ParameterNode>& node);
Reference Show(const std::shared_ptr<host::Transport>& transport);
/// `object` is what the interface describes.
Reference Show(const HostInterface& seen_as, std::shared_ptr<void> object);

/// The node behind an object: this library's own, or one that calls the object by name.
std::shared_ptr<host::ParameterNode> NodeOf(automation_object* object);

/// A class object: "CreateInstance" gives what `make` makes. `context` is passed on.
Reference ShowClass(Reference (*make)(const void* context), const void* context);

// Objects of the C side, called by name.

Value Invoke(const Reference& object, std::int32_t access, const char* member, std::span<Value> arguments);

/// Creates a registered class. Fails with 429.
Reference CreateByName(std::string_view class_name);

/// The host of a process that has set none: its classes are created by programmatic name and called by name,
/// whatever library provides them. The singletons are created on first use and never released.
class HostByName final : public host::Host {
 public:
  host::ErrorReporter& Errors() override;
  host::HostRuntime& Runtime() override;
  host::MessageLog& Log() override;
  std::shared_ptr<host::ParameterNode> CreateParameterNode() override;
  std::shared_ptr<host::Transport> CreateTransport(std::string_view class_name) override;
};

}  // namespace border

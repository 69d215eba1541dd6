// Calls by name over the member table, as automation clients make them, and creation of the published
// classes.
//
// Names count in any letter case. Faults of a call are plain numbers: 438 unknown member (the text names the
// nearest), 450 wrong number of arguments, 383 write of a read-only property, 394 read of a write-only one,
// 13 and 6 from the conversion of a value. Errors of the member itself pass unchanged.
#pragma once

#include <memory>
#include <span>
#include <string_view>

#include "automation/member_table.h"
#include "automation/value.h"
#include "host/driver_identify.h"
#include "host/driver_setup.h"
#include "host/export.h"
#include "host/register.h"

namespace qkel4x {
class clsKEL4x;
class clsRegister;
}  // namespace qkel4x

namespace automation {

/// An object seen through one of the published classes or interfaces. Keeps nothing alive.
class QKEL4X_EXPORT Object {
 public:
  Object(qkel4x::clsKEL4x& driver);           // NOLINT: meant to be implicit, as all below
  Object(qkel4x::clsStatistics& statistics);  // NOLINT
  Object(qkel4x::clsRegister& names);         // NOLINT
  Object(host::IDriverSetup& setup);          // NOLINT
  Object(host::IDriverIdentify& identify);    // NOLINT
  Object(host::IRegister& names);             // NOLINT
  /// `object` is what `seen_as` describes, as a pointer to just that class.
  Object(const Class& seen_as, void* object) : class_(&seen_as), object_(object) {}

  const Class& SeenAs() const { return *class_; }
  void* Address() const { return object_; }

 private:
  const Class* class_;
  void* object_;
};

/// Reads a property, with arguments where it is indexed. The arguments are converted in place; what the call
/// replaces is found there afterwards.
QKEL4X_EXPORT Value Get(const Object& object, std::string_view name, std::span<Value> arguments = {});
QKEL4X_EXPORT Value Get(const Object& object, const Member& member, std::span<Value> arguments = {});

/// Writes a property.
QKEL4X_EXPORT void Put(const Object& object, std::string_view name, const Value& value);
QKEL4X_EXPORT void Put(const Object& object, const Member& member, const Value& value);

/// Calls a method, or reads a property as clients do that cannot tell the two apart.
QKEL4X_EXPORT Value Call(const Object& object, std::string_view name, std::span<Value> arguments = {});
QKEL4X_EXPORT Value Call(const Object& object, const Member& member, std::span<Value> arguments = {});

/// The member of that name. Fails with 438.
QKEL4X_EXPORT const Member& Lookup(const Class& in, std::string_view name);

/// An object that was created by name, and its class.
struct Instance {
  const Class* seen_as = nullptr;
  std::shared_ptr<void> object;

  operator Object() const { return {*seen_as, object.get()}; }  // NOLINT: meant to be implicit
};

/// Creates a published class by its programmatic name, in any letter case: "QKEL4x.clsKEL4x",
/// "QKEL4x.clsRegister", "QKEL4x.clsStatistics". Fails with 429 on another name, and as the class's
/// construction fails.
QKEL4X_EXPORT Instance Create(std::string_view program_id);

}  // namespace automation

// The one list of all published members: what every way into the component (calls by name, the Windows type
// library, Python, the command line, the reference page) is a loop over. The rows are in member_table.cpp.
//
// To add a member: declare it in its class, write it in its chapter, add one row to its class's table with
// the next free id.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "automation/value.h"
#include "driver/core/mode_set.h"
#include "host/export.h"

namespace automation {

enum class Kind : std::uint8_t {
  kProperty,         ///< no arguments; read, written or both
  kIndexedProperty,  ///< read with arguments
  kMethod,
};

/// Calls a member on an object of its class with values of exactly the published types; an argument that the
/// call replaces is written back. Fails with 13 where a value has another type: nothing is converted here.
using Invoke = Value (*)(void* object, std::span<Value> arguments);

/// How a member is reached; everything here is deduced from its method pointers.
struct Access {
  Kind kind = Kind::kMethod;
  Type type{};                       ///< of the property, or of the method's result
  Invoke read = nullptr;             ///< reads the property or calls the method; null where it is write-only
  Invoke write = nullptr;            ///< writes the property; null where it is read-only
  std::array<Type, 2> parameters{};  ///< of an indexed property or a method
  std::uint8_t parameter_count = 0;
};

/// One published member.
struct Member {
  std::int32_t id = 0;  ///< dispatch id: given once, never changed, never used again
  std::string_view name{};
  Access access{};
  std::string_view doc{};                       ///< one sentence
  std::string_view unit{};                      ///< of the value; empty where it has none
  std::string_view range{};                     ///< what a write, or an argument, may be
  qkel4x::ModeSet modes{};                      ///< measurement modes that allow it; empty: every mode
  std::string_view errors{};                    ///< refusals beyond the range and the modes
  std::string_view oddities{};                  ///< what a reader would not expect
  std::array<std::string_view, 2> arguments{};  ///< their published names
  bool hidden = false;

  constexpr bool Readable() const { return access.kind != Kind::kMethod && access.read != nullptr; }
  constexpr bool Writable() const { return access.write != nullptr; }
  constexpr std::span<const Type> Parameters() const {
    return std::span(access.parameters).first(access.parameter_count);
  }
  /// Reads the property or calls the method; see Invoke.
  Value Get(void* object, std::span<Value> values = {}) const { return access.read(object, values); }
  /// Writes the property; see Invoke.
  void Put(void* object, Value value) const { access.write(object, {&value, 1}); }
};

/// One published class or interface.
struct Class {
  std::string_view name{};
  std::string_view program_id{};  ///< creates it; empty where it cannot be created by name
  std::string_view doc{};
  std::span<const Member> members{};
  /// Positions in `members` plus one, by the hash of the name in lower case; 0 is a free slot.
  std::span<const std::uint8_t> index{};

  /// The member of that name, in any letter case; null where there is none.
  QKEL4X_EXPORT const Member* Find(std::string_view member) const;
  /// The member of that id; null where there is none.
  QKEL4X_EXPORT const Member* Find(std::int32_t id) const;
  /// The member whose name is closest to a mistyped one.
  QKEL4X_EXPORT const Member& Nearest(std::string_view member) const;
};

QKEL4X_EXPORT extern const Class kDriverClass;        ///< clsKEL4x
QKEL4X_EXPORT extern const Class kStatisticsClass;    ///< clsStatistics
QKEL4X_EXPORT extern const Class kRegisterClass;      ///< clsRegister
QKEL4X_EXPORT extern const Class kSetupInterface;     ///< IDriverSetup
QKEL4X_EXPORT extern const Class kIdentifyInterface;  ///< IDriverIdentify
QKEL4X_EXPORT extern const Class kRegisterInterface;  ///< IRegister

/// All published classes and interfaces.
QKEL4X_EXPORT std::span<const Class* const> AllClasses();

}  // namespace automation

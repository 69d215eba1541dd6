// The automation value: what travels in calls by name, and the types that a published member may have.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "driver/core/date_time.h"
#include "driver/statistics/clsStatistics.h"
#include "host/export.h"
#include "host/parameter_node.h"

namespace automation {

struct Enumeration;

using Bytes = std::vector<std::uint8_t>;
using Statistics = std::shared_ptr<qkel4x::clsStatistics>;
using Settings = std::shared_ptr<host::ParameterNode>;

/// One value of any published type. An enumeration travels as its 32-bit number.
using Value = std::variant<std::monostate, bool, std::int16_t, std::int32_t, double, qkel4x::DateTime,
                           std::string, Bytes, Statistics, Settings>;

/// Which alternative of Value; the numbers are the alternative's index.
enum class ValueType : std::uint8_t {
  kNothing,
  kBool,
  kInt16,
  kInt32,
  kDouble,
  kDateTime,
  kText,
  kBytes,
  kStatistics,
  kSettings,
};
static_assert(std::variant_size_v<Value> == static_cast<std::size_t>(ValueType::kSettings) + 1);

inline ValueType TypeOf(const Value& value) { return static_cast<ValueType>(value.index()); }

/// The published type of a property, an argument or a result.
struct Type {
  ValueType value = ValueType::kNothing;
  const Enumeration* enumeration = nullptr;  ///< set where the 32-bit number is one of an enumeration
  bool by_reference = false;                 ///< published as passed by reference
  bool written_back = false;                 ///< the call replaces the argument
};

/// What people read: "double", "16-bit integer", "text", ..., or the name of the enumeration.
QKEL4X_EXPORT std::string_view TypeName(const Type& type);

/// The value as that type, as automation clients expect it: numbers round to the nearest integer, halves to
/// the even one (6 where the type cannot hold it); true is -1; a text that is a number counts as that number
/// and "true" and "false" as booleans; nothing counts as 0 or the empty text; a date and a time as text are
/// "2009-01-05", "14:03:09" or both with a blank or a "T" between. Fails with 13 on what is no such value.
QKEL4X_EXPORT Value Convert(const Value& value, const Type& type);

/// The value as people read it: numbers in their shortest form, "True" and "False", dates as Convert reads
/// them, bytes as their count. Fails with 13 on an object.
QKEL4X_EXPORT std::string ValueText(const Value& value);

}  // namespace automation

// A method of a generated interface as the member cases call it: through the virtual table, with values of
// the published types.
#pragma once

#include <ole2.h>

#include <span>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "automation/value.h"
#include "com/errors.h"
#include "com/text.h"
#include "com/variant.h"

namespace member_cases {

using automation::Type;
using automation::Value;

/// The object that stands for a statistics object of the component.
automation::Statistics StandInFor(IDispatch* statistics);

// The published types meet their automation forms; VARIANT_BOOL and short, DATE and double are told apart by
// the member table's type.
inline void Into(const Value& value, short& to) {
  const auto* flag = std::get_if<bool>(&value);
  to = flag != nullptr ? (*flag ? VARIANT_TRUE : VARIANT_FALSE) : std::get<std::int16_t>(value);
}
inline void Into(const Value& value, long& to) { to = std::get<std::int32_t>(value); }
inline void Into(const Value& value, double& to) {
  const auto* date = std::get_if<qkel4x::DateTime>(&value);
  to = date != nullptr ? date->days : std::get<double>(value);
}
inline void Into(const Value& value, BSTR& to) { to = com::NewBstr(std::get<std::string>(value)); }
inline void Into(const Value& value, SAFEARRAY*& to) {
  to = com::NewByteArray(std::get<automation::Bytes>(value));
}
template <class Enumeration>
requires std::is_enum_v<Enumeration>
void Into(const Value& value, Enumeration& to) {
  to = static_cast<Enumeration>(std::get<std::int32_t>(value));
}

inline Value From(short from, const Type& type) {
  if (type.value == automation::ValueType::kBool) return from != VARIANT_FALSE;
  return static_cast<std::int16_t>(from);
}
inline Value From(long from, const Type&) { return static_cast<std::int32_t>(from); }
inline Value From(double from, const Type& type) {
  if (type.value == automation::ValueType::kDateTime) return qkel4x::DateTime{from};
  return from;
}
inline Value From(BSTR from, const Type&) {
  std::string text = com::Text(from);
  SysFreeString(from);
  return text;
}
inline Value From(VARIANT from, const Type&) {
  std::string text = com::TextOf(from);
  VariantClear(&from);
  return text;
}
inline Value From(IDispatch* from, const Type&) {
  const Value stand_in = StandInFor(from);
  from->Release();
  return stand_in;
}
template <class Enumeration>
requires std::is_enum_v<Enumeration> Value From(Enumeration from, const Type&) {
  return static_cast<std::int32_t>(from);
}

/// What a call keeps for one parameter: the thing itself, or what a pointer points to.
template <class Parameter>
struct Kept {
  std::remove_pointer_t<Parameter> value{};
  Parameter Pass() { return &value; }
};
template <class Parameter>
requires(!std::is_pointer_v<Parameter> || std::is_same_v<Parameter, BSTR>) struct Kept<Parameter> {
  Parameter value{};
  Parameter Pass() { return value; }
};

template <class Method>
struct Signature;
template <class Interface, class... Parameters>
struct Signature<HRESULT (STDMETHODCALLTYPE Interface::*)(Parameters...)> {
  using Method = HRESULT (STDMETHODCALLTYPE Interface::*)(Parameters...);

  /// Reads a property or calls a method. The last parameter, where there is one more than arguments, is the
  /// result.
  static Value Get(void* object, Method method, std::span<Value> arguments, const Type& type) {
    return Spread(object, method, arguments, type, std::index_sequence_for<Parameters...>());
  }

 private:
  template <std::size_t... kPosition>
  static Value Spread(void* object, Method method, std::span<Value> arguments, const Type& type,
                      std::index_sequence<kPosition...>) {
    std::tuple<Kept<Parameters>...> kept;
    (Take(std::get<kPosition>(kept).value, arguments, kPosition), ...);
    SetErrorInfo(0, nullptr);
    const HRESULT result = (static_cast<Interface*>(object)->*method)(std::get<kPosition>(kept).Pass()...);
    (PutBack(std::get<kPosition>(kept).value, arguments, kPosition), ...);
    com::ThrowIfFailed(result, "the call");
    if constexpr (sizeof...(Parameters) > 0) {
      if (arguments.size() < sizeof...(Parameters)) {
        return From(std::get<sizeof...(Parameters) - 1>(kept).value, type);
      }
    }
    return {};
  }
  template <class T>
  static void Take(T& kept, std::span<Value> arguments, std::size_t position) {
    if constexpr (requires(const Value& value) { Into(value, kept); }) {
      if (position < arguments.size()) Into(arguments[position], kept);
    }
  }
  template <class T>
  static void PutBack(T& kept, std::span<Value> arguments, std::size_t position) {
    if (position >= arguments.size()) return;
    if constexpr (std::is_same_v<T, SAFEARRAY*>) {
      arguments[position] = com::BytesOf(kept);
      SafeArrayDestroy(kept);
    } else if constexpr (std::is_same_v<T, BSTR>) {
      SysFreeString(kept);
    }
  }
};

/// The two methods of a member; null where it has none.
struct EarlyMember {
  std::string_view name;
  Value (*get)(void* object, std::span<Value> arguments, const Type& type);
  void (*put)(void* object, Value value);
};

template <auto kGet, auto kPut>
constexpr EarlyMember Early(std::string_view name) {
  EarlyMember member{name, nullptr, nullptr};
  if constexpr (!std::is_null_pointer_v<decltype(kGet)>) {
    member.get = [](void* object, std::span<Value> arguments, const Type& type) {
      return Signature<decltype(kGet)>::Get(object, kGet, arguments, type);
    };
  }
  if constexpr (!std::is_null_pointer_v<decltype(kPut)>) {
    member.put = [](void* object, Value value) {
      Signature<decltype(kPut)>::Get(object, kPut, {&value, 1}, Type());
    };
  }
  return member;
}

}  // namespace member_cases

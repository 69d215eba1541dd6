// Turns method pointers into the table's type-erased access, at compile time. Used by the member table alone.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

#include "automation/enumeration_table.h"
#include "automation/member_table.h"
#include "host/automation_error.h"

namespace automation {

/// Which alternative of Value holds a T.
template <class T, class... Alternatives>
consteval ValueType Alternative(const std::variant<Alternatives...>* /*type only*/) {
  static_assert((std::is_same_v<T, Alternatives> || ...), "no automation value has this type");
  std::size_t index = 0;
  static_cast<void>(((std::is_same_v<T, Alternatives> || (++index, false)) || ...));
  return static_cast<ValueType>(index);
}

template <class T>
constexpr Type PublishedType() {
  using Bare = std::remove_cvref_t<T>;
  Type type{.by_reference = std::is_lvalue_reference_v<T> && !std::is_same_v<Bare, std::string>,
            .written_back = std::is_lvalue_reference_v<T> && !std::is_const_v<std::remove_reference_t<T>>};
  if constexpr (std::is_enum_v<Bare>) {
    type.value = ValueType::kInt32;
    type.enumeration = &kEnumeration<Bare>;
    static_assert(!kEnumeration<Bare>.name.empty(), "the enumeration has no row in the enumeration table");
  } else if constexpr (std::is_convertible_v<Bare, std::string_view>) {
    type.value = ValueType::kText;
  } else if constexpr (!std::is_void_v<Bare>) {
    type.value = Alternative<Bare>(static_cast<const Value*>(nullptr));
  }
  return type;
}

/// The C++ form of an argument, out of a value of exactly the published type.
template <class T>
decltype(auto) Unpack(Value& value) {
  using Bare = std::remove_cvref_t<T>;
  using Held =
      std::conditional_t<std::is_enum_v<Bare>, std::int32_t,
                         std::conditional_t<std::is_same_v<Bare, std::string_view>, std::string, Bare>>;
  Held* held = std::get_if<Held>(&value);
  if (held == nullptr) throw host::AutomationError(host::kTypeMismatch, "QKEL4x", "Type mismatch");
  if constexpr (std::is_enum_v<Bare>) {
    return static_cast<Bare>(*held);
  } else {
    return static_cast<Held&>(*held);
  }
}

template <class T>
Value Pack(T&& result) {
  using Bare = std::remove_cvref_t<T>;
  if constexpr (std::is_enum_v<Bare>) {
    return Value(std::in_place_type<std::int32_t>, static_cast<std::int32_t>(result));
  } else {
    return Value(std::in_place_type<Bare>, std::forward<T>(result));
  }
}

template <class C, class R, class... A>
struct Signature {
  using Result = R;
  static constexpr std::array<Type, 2> kParameters{PublishedType<A>()...};
  static constexpr std::uint8_t kCount = sizeof...(A);

  template <auto kMethod>
  static Value Invoke(void* object, [[maybe_unused]] std::span<Value> arguments) {
    return Spread<kMethod>(*static_cast<C*>(object), arguments, std::index_sequence_for<A...>());
  }
  template <auto kMethod, std::size_t... kPosition>
  static Value Spread(C& object, std::span<Value> arguments, std::index_sequence<kPosition...>) {
    if (arguments.size() != sizeof...(A)) {
      throw host::AutomationError(host::kWrongArgumentCount, "QKEL4x", "Wrong number of arguments");
    }
    if constexpr (std::is_void_v<R>) {
      (object.*kMethod)(Unpack<A>(arguments[kPosition])...);
      return {};
    } else {
      return Pack((object.*kMethod)(Unpack<A>(arguments[kPosition])...));
    }
  }
};

template <class C, class R, class... A>
Signature<C, R, A...> SignatureOf(R (C::*)(A...));
template <class C, class R, class... A>
Signature<C, R, A...> SignatureOf(R (C::*)(A...) const);

/// Picks the reading one of a pair of members of one name.
template <class C, class R>
consteval auto Reader(R (C::*method)()) {
  return method;
}
template <class C, class R>
consteval auto Reader(R (C::*method)() const) {
  return method;
}
/// Picks the writing one.
template <class C, class A>
consteval auto Writer(void (C::*method)(A)) {
  return method;
}

template <auto kMethod>
constexpr Access CallAs(Kind kind) {
  using S = decltype(SignatureOf(kMethod));
  return {.kind = kind,
          .type = PublishedType<typename S::Result>(),
          .read = &S::template Invoke<kMethod>,
          .parameters = S::kParameters,
          .parameter_count = S::kCount};
}

/// A property that is only read.
template <auto kRead>
constexpr Access Read() {
  return CallAs<kRead>(Kind::kProperty);
}

/// A property that is read and written.
template <auto kRead, auto kWrite>
constexpr Access ReadWrite() {
  Access access = CallAs<kRead>(Kind::kProperty);
  access.write = CallAs<kWrite>(Kind::kMethod).read;
  return access;
}

/// A property that is read with arguments.
template <auto kRead>
constexpr Access Indexed() {
  return CallAs<kRead>(Kind::kIndexedProperty);
}

/// A method.
template <auto kCall>
constexpr Access Method() {
  return CallAs<kCall>(Kind::kMethod);
}

}  // namespace automation

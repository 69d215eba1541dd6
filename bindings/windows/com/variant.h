// The platform's value: ownership, and conversion from and to the types of this system.
#pragma once

#include <ole2.h>

#include <concepts>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/value.h"

namespace com {

/// A value that frees itself.
class Variant {
 public:
  Variant() { VariantInit(&value_); }
  explicit Variant(std::string_view text);
  template <std::same_as<bool> Flag>  // nothing else becomes a flag by accident
  explicit Variant(Flag flag) : Variant() {
    V_VT(&value_) = VT_BOOL;
    V_BOOL(&value_) = flag ? VARIANT_TRUE : VARIANT_FALSE;
  }
  explicit Variant(std::int16_t number);
  explicit Variant(std::int32_t number);
  explicit Variant(float number);
  explicit Variant(double number);
  explicit Variant(IDispatch* object);  ///< takes a reference of its own
  static Variant Of(const host::Value& value);
  /// A reference to a value, for an argument that the called object fills.
  static Variant Reference(Variant& target);
  ~Variant() { VariantClear(&value_); }
  Variant(Variant&& other) noexcept : value_(other.value_) { VariantInit(&other.value_); }
  Variant& operator=(Variant&& other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;

  VARIANT* operator->() { return &value_; }
  const VARIANT* operator->() const { return &value_; }
  VARIANT* Get() { return &value_; }
  const VARIANT& operator*() const { return value_; }
  /// Gives the value away.
  VARIANT Release();

 private:
  VARIANT value_;
};

/// The value as another type, as automation converts; fails with 13 or 6.
Variant Converted(const VARIANT& value, VARTYPE type);
std::string TextOf(const VARIANT& value);
host::Value ValueOf(const VARIANT& value);
/// Arrays of bytes and arrays of values that are bytes. Nothing is an empty array.
std::vector<std::uint8_t> BytesOf(const VARIANT& value);
std::vector<std::uint8_t> BytesOf(SAFEARRAY* bytes);
/// A new array, which the caller frees.
SAFEARRAY* NewByteArray(std::span<const std::uint8_t> bytes);
SAFEARRAY* NewValueArray(std::span<const std::uint8_t> bytes);
/// Whether an optional argument was left out.
bool IsMissing(const VARIANT& value);

}  // namespace com

#include "com/variant.h"

#include <cstring>
#include <new>
#include <type_traits>

#include "com/errors.h"
#include "com/module.h"
#include "com/text.h"

namespace com {
namespace {

const VARIANT& Target(const VARIANT& value) {
  return V_VT(&value) == (VT_BYREF | VT_VARIANT) ? Target(*V_VARIANTREF(&value)) : value;
}

[[noreturn]] void RaiseMismatch(const char* description) {
  throw host::AutomationError(host::kTypeMismatch, kModule.name, description);
}

SAFEARRAY* NewArray(VARTYPE type, std::size_t size) {
  SAFEARRAY* made = SafeArrayCreateVector(type, 0, static_cast<ULONG>(size));
  if (made == nullptr) throw std::bad_alloc();
  return made;
}

}  // namespace

Variant::Variant(std::string_view text) : Variant() {
  V_BSTR(&value_) = NewBstr(text);
  V_VT(&value_) = VT_BSTR;
}
Variant::Variant(std::int16_t number) : Variant() {
  V_VT(&value_) = VT_I2;
  V_I2(&value_) = number;
}
Variant::Variant(std::int32_t number) : Variant() {
  V_VT(&value_) = VT_I4;
  V_I4(&value_) = number;
}
Variant::Variant(float number) : Variant() {
  V_VT(&value_) = VT_R4;
  V_R4(&value_) = number;
}
Variant::Variant(double number) : Variant() {
  V_VT(&value_) = VT_R8;
  V_R8(&value_) = number;
}
Variant::Variant(IDispatch* object) : Variant() {
  V_VT(&value_) = VT_DISPATCH;
  V_DISPATCH(&value_) = object;
  if (object != nullptr) object->AddRef();
}
Variant Variant::Of(const host::Value& value) {
  return std::visit(
      [](const auto& held) {
        if constexpr (std::is_same_v<decltype(held), const std::monostate&>) {
          return Variant();
        } else {
          return Variant(held);
        }
      },
      value);
}
Variant Variant::Reference(Variant& target) {
  Variant reference;
  V_VT(&reference.value_) = VT_BYREF | VT_VARIANT;
  V_VARIANTREF(&reference.value_) = &target.value_;
  return reference;
}

VARIANT Variant::Release() {
  const VARIANT given = value_;
  VariantInit(&value_);
  return given;
}

Variant Converted(const VARIANT& value, VARTYPE type) {
  Variant converted;
  const HRESULT result = VariantChangeType(converted.Get(), const_cast<VARIANT*>(&Target(value)), 0, type);
  if (result == DISP_E_OVERFLOW) {
    throw host::AutomationError(host::kOverflow, kModule.name, "Overflow");
  }
  if (FAILED(result)) RaiseMismatch("Type mismatch");
  return converted;
}

std::string TextOf(const VARIANT& value) { return Text(V_BSTR(&*Converted(value, VT_BSTR))); }

host::Value ValueOf(const VARIANT& value) {
  const VARIANT& target = Target(value);
  switch (V_VT(&target) & ~VT_BYREF) {
    case VT_EMPTY:
    case VT_NULL:
      return std::monostate();
    case VT_BOOL:
      return V_BOOL(&*Converted(target, VT_BOOL)) != VARIANT_FALSE;
    case VT_I1:
    case VT_UI1:
    case VT_I2:
      return static_cast<std::int16_t>(V_I2(&*Converted(target, VT_I2)));
    case VT_UI2:
    case VT_I4:
    case VT_INT:
      return static_cast<std::int32_t>(V_I4(&*Converted(target, VT_I4)));
    case VT_BSTR:
      return TextOf(target);
    default:
      return V_R8(&*Converted(target, VT_R8));
  }
}

std::vector<std::uint8_t> BytesOf(SAFEARRAY* bytes) {
  if (bytes == nullptr) return {};
  VARTYPE type = VT_EMPTY;
  if (SafeArrayGetDim(bytes) != 1 || FAILED(SafeArrayGetVartype(bytes, &type))) {
    RaiseMismatch("An array of bytes is wanted here");
  }
  const std::size_t size = bytes->rgsabound[0].cElements;
  std::vector<std::uint8_t> copy(size);
  void* data = nullptr;
  if ((type != VT_UI1 && type != VT_VARIANT) || FAILED(SafeArrayAccessData(bytes, &data))) {
    RaiseMismatch("An array of bytes is wanted here");
  }
  try {
    if (type == VT_UI1) {
      if (size != 0) std::memcpy(copy.data(), data, size);
    } else {
      const auto* values = static_cast<const VARIANT*>(data);
      for (std::size_t i = 0; i < size; ++i) copy[i] = V_UI1(&*Converted(values[i], VT_UI1));
    }
  } catch (...) {
    SafeArrayUnaccessData(bytes);
    throw;
  }
  SafeArrayUnaccessData(bytes);
  return copy;
}

std::vector<std::uint8_t> BytesOf(const VARIANT& value) {
  const VARIANT& target = Target(value);
  if (V_VT(&target) == VT_EMPTY || V_VT(&target) == VT_NULL || IsMissing(target)) return {};
  if ((V_VT(&target) & VT_ARRAY) == 0) RaiseMismatch("An array of bytes is wanted here");
  return BytesOf((V_VT(&target) & VT_BYREF) != 0 ? *V_ARRAYREF(&target) : V_ARRAY(&target));
}

SAFEARRAY* NewByteArray(std::span<const std::uint8_t> bytes) {
  SAFEARRAY* made = NewArray(VT_UI1, bytes.size());
  if (!bytes.empty()) std::memcpy(made->pvData, bytes.data(), bytes.size());
  return made;
}

SAFEARRAY* NewValueArray(std::span<const std::uint8_t> bytes) {
  SAFEARRAY* made = NewArray(VT_VARIANT, bytes.size());
  auto* values = static_cast<VARIANT*>(made->pvData);
  for (const std::uint8_t byte : bytes) {
    V_VT(values) = VT_UI1;
    V_UI1(values) = byte;
    ++values;
  }
  return made;
}

bool IsMissing(const VARIANT& value) {
  const VARIANT& target = Target(value);
  return V_VT(&target) == VT_ERROR && V_ERROR(&target) == DISP_E_PARAMNOTFOUND;
}

}  // namespace com

// Calls by name on somebody else's object.
#pragma once

#include <ole2.h>
#include <wrl/client.h>

#include <span>
#include <string>
#include <string_view>

#include "com/variant.h"

namespace com {

/// An object that is called by name. A failed call is an AutomationError with what the object said.
class LateBound {
 public:
  LateBound() = default;
  explicit LateBound(Microsoft::WRL::ComPtr<IDispatch> object) : object_(std::move(object)) {}
  /// Creates an object by its programmatic name. Fails with 429 where no class has it, else as the class
  /// says.
  static LateBound Create(std::string_view program_name);

  template <class... Arguments>
  Variant Call(const wchar_t* member, Arguments&&... arguments) const {
    Variant list[] = {Variant(std::forward<Arguments>(arguments))..., Variant()};
    return Invoke(member, DISPATCH_METHOD, std::span(list, sizeof...(Arguments)));
  }
  template <class... Arguments>
  Variant Read(const wchar_t* member, Arguments&&... arguments) const {
    Variant list[] = {Variant(std::forward<Arguments>(arguments))..., Variant()};
    return Invoke(member, DISPATCH_PROPERTYGET, std::span(list, sizeof...(Arguments)));
  }
  /// The last argument is the new value.
  template <class... Arguments>
  void Write(const wchar_t* member, Arguments&&... arguments) const {
    Variant list[] = {Variant(std::forward<Arguments>(arguments))..., Variant()};
    Invoke(member, DISPATCH_PROPERTYPUT, std::span(list, sizeof...(Arguments)));
  }

  bool Has(const wchar_t* member) const;
  IDispatch* Get() const { return object_.Get(); }

 private:
  Variant Invoke(const wchar_t* member, WORD flags, std::span<Variant> arguments) const;

  Microsoft::WRL::ComPtr<IDispatch> object_;
};

/// The object in a value. Fails with 91 where it holds none.
LateBound ObjectOf(const VARIANT& value);

}  // namespace com

#include "com/late_bound.h"

#include <array>

#include "com/errors.h"
#include "com/module.h"
#include "com/text.h"

using Microsoft::WRL::ComPtr;

namespace com {

LateBound LateBound::Create(std::string_view program_name) {
  CLSID class_id{};
  ComPtr<IDispatch> object;
  SetErrorInfo(0, nullptr);
  HRESULT result = CLSIDFromProgID(Wide(program_name).c_str(), &class_id);
  if (SUCCEEDED(result)) {
    result = CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                              IID_PPV_ARGS(&object));
  }
  if (NumberOf(result) == host::kCannotCreateObject) {
    throw host::AutomationError(host::kCannotCreateObject, kModule.name,
                                "No class is registered as \"" + std::string(program_name) + "\"");
  }
  ThrowIfFailed(result, "Creating an object by name");
  return LateBound(std::move(object));
}

bool LateBound::Has(const wchar_t* member) const {
  DISPID id = DISPID_UNKNOWN;
  auto* name = const_cast<LPOLESTR>(member);
  return object_ != nullptr &&
         SUCCEEDED(object_->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id));
}

Variant LateBound::Invoke(const wchar_t* member, WORD flags, std::span<Variant> arguments) const {
  if (object_ == nullptr) {
    throw host::AutomationError(host::kNoObject, kModule.name, "Object variable not set");
  }
  const std::string name = Narrow(member);
  DISPID id = DISPID_UNKNOWN;
  auto* asked = const_cast<LPOLESTR>(member);
  ThrowIfFailed(object_->GetIDsOfNames(IID_NULL, &asked, 1, LOCALE_USER_DEFAULT, &id), name.c_str());

  std::array<VARIANT, 8> backwards{};
  for (std::size_t i = 0; i < arguments.size(); ++i) backwards.at(arguments.size() - 1 - i) = *arguments[i];
  DISPID put = DISPID_PROPERTYPUT;
  DISPPARAMS list{};
  list.rgvarg = backwards.data();
  list.cArgs = static_cast<UINT>(arguments.size());
  if (flags == DISPATCH_PROPERTYPUT) {
    list.rgdispidNamedArgs = &put;
    list.cNamedArgs = 1;
  }
  Variant result;
  EXCEPINFO information{};
  const HRESULT called =
      object_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &list,
                      flags == DISPATCH_PROPERTYPUT ? nullptr : result.Get(), &information, nullptr);
  ThrowIfFailed(called, information, name.c_str());
  return result;
}

LateBound ObjectOf(const VARIANT& value) {
  ComPtr<IDispatch> object;
  if (V_VT(&value) == VT_DISPATCH || V_VT(&value) == VT_UNKNOWN) {
    if (IUnknown* held = V_UNKNOWN(&value); held != nullptr) held->QueryInterface(IID_PPV_ARGS(&object));
  }
  if (object == nullptr) {
    throw host::AutomationError(host::kNoObject, kModule.name, "Object variable not set");
  }
  return LateBound(std::move(object));
}

}  // namespace com

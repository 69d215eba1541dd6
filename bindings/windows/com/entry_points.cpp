// The entry points of an in-process server, over its kModule.
#include <string_view>

#include "com/module.h"

STDAPI DllGetClassObject(REFCLSID class_id, REFIID interface_id, void** object) {
  if (object == nullptr) return E_POINTER;
  *object = nullptr;
  for (const com::PublishedClass& published : com::kModule.classes) {
    if (*published.id == class_id) return com::ClassObject(published, interface_id, object);
  }
  return CLASS_E_CLASSNOTAVAILABLE;
}

STDAPI DllCanUnloadNow() { return com::Held() ? S_FALSE : S_OK; }

STDAPI DllRegisterServer() { return com::Register(false); }

STDAPI DllUnregisterServer() { return com::Unregister(); }

/// "user" on the command line registers for this user alone: regsvr32 /n /i:user.
STDAPI DllInstall(BOOL install, LPCWSTR command_line) {
  if (install == FALSE) return com::Unregister();
  return com::Register(command_line != nullptr && std::wstring_view(command_line) == L"user");
}

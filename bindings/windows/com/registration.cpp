#include "com/registration.h"

#include <wrl/client.h>

#include <string_view>

#include "com/errors.h"
#include "com/module.h"

using Microsoft::WRL::ComPtr;

namespace com {
namespace {

constexpr wchar_t kClasses[] = L"Software\\Classes\\";
// The platform's marshaller for interfaces that a type library describes.
constexpr wchar_t kTypeLibraryMarshaller[] = L"{00020424-0000-0000-C000-000000000046}";
#ifdef _WIN64
constexpr wchar_t kPlatform[] = L"win64";
#else
constexpr wchar_t kPlatform[] = L"win32";
#endif

std::wstring GuidText(REFGUID guid) {
  wchar_t text[40] = {};
  StringFromGUID2(guid, text, 40);
  return text;
}

std::wstring Documentation(ITypeLib& library, INT index, bool name) {
  BSTR text = nullptr;
  ThrowIfFailed(
      library.GetDocumentation(index, name ? &text : nullptr, name ? nullptr : &text, nullptr, nullptr),
      "Reading the type library");
  std::wstring copy(text, SysStringLen(text));
  SysFreeString(text);
  return copy;
}

LSTATUS Write(HKEY root, const RegistryEntry& entry) {
  const std::wstring path = kClasses + entry.path;
  return RegSetKeyValueW(root, path.c_str(), entry.name.empty() ? nullptr : entry.name.c_str(), REG_SZ,
                         entry.value.c_str(), static_cast<DWORD>((entry.value.size() + 1) * sizeof(wchar_t)));
}

LSTATUS WriteAll(HKEY root, const RegistryEntryList& list) {
  for (const RegistryEntry& entry : list.entries) {
    if (const LSTATUS status = Write(root, entry); status != ERROR_SUCCESS) return status;
  }
  return ERROR_SUCCESS;
}

LSTATUS RemoveAll(HKEY root, const RegistryEntryList& list) {
  LSTATUS worst = ERROR_SUCCESS;
  for (const std::wstring& key : list.own_keys) {
    const std::wstring path = kClasses + key;
    HKEY open = nullptr;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &open) != ERROR_SUCCESS) continue;
    RegCloseKey(open);
    if (const LSTATUS status = RegDeleteTreeW(root, path.c_str()); status != ERROR_SUCCESS) worst = status;
  }
  // A user who had none of these before has none afterwards; a key with others below it stays.
  for (const wchar_t* parent : {L"CLSID", L"Interface", L"TypeLib"}) {
    RegDeleteKeyW(root, (std::wstring(kClasses) + parent).c_str());
  }
  return worst;
}

}  // namespace

RegistryEntryList RegistryEntries(ITypeLib& library) {
  RegistryEntryList list;
  const auto own = [&](std::wstring key) {
    list.own_keys.push_back(key);
    return key;
  };
  const std::wstring file = ModulePath();
  const std::wstring folder = file.substr(0, file.find_last_of(L'\\'));

  TLIBATTR* attributes = nullptr;
  ThrowIfFailed(library.GetLibAttr(&attributes), "Reading the type library");
  const std::wstring library_id = GuidText(attributes->guid);
  const std::wstring version =
      std::to_wstring(attributes->wMajorVerNum) + L"." + std::to_wstring(attributes->wMinorVerNum);
  library.ReleaseTLibAttr(attributes);

  const std::wstring library_key = own(L"TypeLib\\" + library_id) + L"\\" + version;
  list.entries.push_back({library_key, L"", Documentation(library, -1, false)});
  list.entries.push_back({library_key + L"\\0\\" + kPlatform, L"", file});
  list.entries.push_back({library_key + L"\\FLAGS", L"", L"0"});
  list.entries.push_back({library_key + L"\\HELPDIR", L"", folder});

  for (UINT index = 0; index < library.GetTypeInfoCount(); ++index) {
    ComPtr<ITypeInfo> type;
    ThrowIfFailed(library.GetTypeInfo(index, &type), "Reading the type library");
    TYPEATTR* type_attributes = nullptr;
    ThrowIfFailed(type->GetTypeAttr(&type_attributes), "Reading the type library");
    const bool dual =
        type_attributes->typekind == TKIND_DISPATCH && (type_attributes->wTypeFlags & TYPEFLAG_FDUAL) != 0;
    const std::wstring id = GuidText(type_attributes->guid);
    type->ReleaseTypeAttr(type_attributes);
    if (!dual) continue;
    const std::wstring key = own(L"Interface\\" + id);
    list.entries.push_back({key, L"", Documentation(library, static_cast<INT>(index), true)});
    list.entries.push_back({key + L"\\ProxyStubClsid32", L"", kTypeLibraryMarshaller});
    list.entries.push_back({key + L"\\TypeLib", L"", library_id});
    list.entries.push_back({key + L"\\TypeLib", L"Version", version});
  }

  for (const PublishedClass& published : kModule.classes) {
    const std::wstring id = GuidText(*published.id);
    const std::wstring class_key = own(L"CLSID\\" + id);
    const std::wstring name_key = own(published.program_name);
    list.entries.push_back({name_key, L"", published.description});
    list.entries.push_back({name_key + L"\\CLSID", L"", id});
    list.entries.push_back({class_key, L"", published.description});
    list.entries.push_back({class_key + L"\\InprocServer32", L"", file});
    list.entries.push_back({class_key + L"\\InprocServer32", L"ThreadingModel", L"Apartment"});
    list.entries.push_back({class_key + L"\\ProgID", L"", published.program_name});
    list.entries.push_back({class_key + L"\\TypeLib", L"", library_id});
    list.entries.push_back({class_key + L"\\Version", L"", version});
    list.entries.push_back({class_key + L"\\Programmable", L"", L""});
  }
  return list;
}

HRESULT WriteEntries(const RegistryEntryList& list, bool for_this_user_only) {
  LSTATUS status = for_this_user_only ? ERROR_ACCESS_DENIED : WriteAll(HKEY_LOCAL_MACHINE, list);
  if (status == ERROR_ACCESS_DENIED) status = WriteAll(HKEY_CURRENT_USER, list);
  return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

HRESULT RemoveEntries(const RegistryEntryList& list) {
  const LSTATUS machine = RemoveAll(HKEY_LOCAL_MACHINE, list);
  const LSTATUS user = RemoveAll(HKEY_CURRENT_USER, list);
  return HRESULT_FROM_WIN32(static_cast<DWORD>(machine != ERROR_SUCCESS ? machine : user));
}

}  // namespace com

// The registry entries of a module: its classes, its type library and the interfaces in it.
#pragma once

#include <ole2.h>

#include <string>
#include <vector>

namespace com {

/// One value under Software\Classes.
struct RegistryEntry {
  std::wstring path;
  std::wstring name;  ///< empty for the key's own value
  std::wstring value;
};

struct RegistryEntryList {
  std::vector<RegistryEntry> entries;
  std::vector<std::wstring> own_keys;  ///< to be removed with all below them
};

std::wstring ModulePath();
RegistryEntryList RegistryEntries(ITypeLib& library);

/// Writes for the whole machine, or for this user where the machine's entries are not ours to write.
HRESULT WriteEntries(const RegistryEntryList& list, bool for_this_user_only);
/// Removes for the machine and for this user; what is not there is removed already.
HRESULT RemoveEntries(const RegistryEntryList& list);

}  // namespace com

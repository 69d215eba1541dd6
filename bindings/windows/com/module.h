// What one in-process server publishes, and the four entry points over it. Each DLL defines kModule.
#pragma once

#include <ole2.h>

#include <span>
#include <string_view>

namespace com {

/// One class that clients may create by name.
struct PublishedClass {
  const CLSID* id;
  const wchar_t* program_name;  ///< "QKEL4x.clsKEL4x"
  const wchar_t* description;
  void (*create)(REFIID interface_id, void** object);  ///< throws where it fails
};

struct Module {
  const char* name;  ///< the source of errors that no member raises
  std::string_view help_file;
  const GUID* library;
  std::span<const PublishedClass> classes;
};
extern const Module kModule;

/// This module's file.
HMODULE ThisModule();
/// The description of one interface, out of the type library inside this module's file. Stays until the
/// process ends.
HRESULT TypeInformation(REFIID interface_id, ITypeInfo** information);

/// Counts what keeps the module in memory: objects and locks.
void Hold();
void LetGo();
bool Held();

/// Makes the class object of a published class.
HRESULT ClassObject(const PublishedClass& published, REFIID interface_id, void** object);

/// Writes or removes the registry entries of all classes, interfaces and the library.
HRESULT Register(bool for_this_user_only);
HRESULT Unregister();

}  // namespace com

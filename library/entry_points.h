// The four entry points of a library of classes, and what its own ones share.
#pragma once

#include <dlfcn.h>

#include <span>
#include <string_view>

#include "host/class_factory.h"
#include "host/export.h"
#include "library/border.h"

extern "C" {
QKEL4X_EXPORT std::int32_t DllGetClassObject(const char* class_name, automation_object** class_object,
                                             automation_error* error);
QKEL4X_EXPORT std::int32_t DllCanUnloadNow(void);
QKEL4X_EXPORT std::int32_t DllRegisterServer(void);
QKEL4X_EXPORT std::int32_t DllUnregisterServer(void);
}

namespace border {

/// One class that a library offers.
struct OfferedClass {
  const char* name;
  Reference (*make)(const void* offered);
};

/// The class object of one of these classes, in any letter case; 429 and the list of them on another name.
std::int32_t GetClassObject(std::span<const OfferedClass> offered, const char* class_name,
                            automation_object** class_object, automation_error* error) noexcept;

/// Writes or removes the class files of these classes for the library that holds `address`.
std::int32_t Register(std::span<const OfferedClass> offered, void* address) noexcept;
std::int32_t Unregister(std::span<const OfferedClass> offered, void* address) noexcept;

}  // namespace border

// The classes that libqkel4x.so offers to hosts that create them by programmatic name.
#include <mutex>

#include "host/automation_error.h"
#include "library/border.h"
#include "library/entry_points.h"

namespace {

/// Gives a process that has set no host the one whose objects are created by name.
void EnsureHost() {
  static std::mutex mutex;
  static border::HostByName by_name;
  const std::lock_guard lock(mutex);
  try {
    static_cast<void>(host::CurrentHost());
  } catch (const host::AutomationError&) {
    host::SetCurrentHost(&by_name);
  }
}

border::Reference Make(const void* offered) {
  EnsureHost();
  return border::Show(automation::Create(static_cast<const border::OfferedClass*>(offered)->name));
}

constexpr border::OfferedClass kOffered[] = {
    {"QKEL4x.clsKEL4x", &Make},
    {"QKEL4x.clsRegister", &Make},
    {"QKEL4x.clsStatistics", &Make},
};

}  // namespace

std::int32_t DllGetClassObject(const char* class_name, automation_object** class_object,
                               automation_error* error) {
  return border::GetClassObject(kOffered, class_name, class_object, error);
}
std::int32_t DllCanUnloadNow() { return border::LivingObjects() == 0 ? 0 : 1; }
std::int32_t DllRegisterServer() {
  return border::Register(kOffered, reinterpret_cast<void*>(&DllRegisterServer));
}
std::int32_t DllUnregisterServer() {
  return border::Unregister(kOffered, reinterpret_cast<void*>(&DllRegisterServer));
}

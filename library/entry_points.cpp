#include "library/entry_points.h"

#include <array>
#include <climits>
#include <cstdlib>
#include <string>

#include "automation/names.h"
#include "host/automation_error.h"

namespace border {
namespace {

/// The absolute path of the library that holds an address; empty where it cannot be told.
std::string LibraryOf(void* address) {
  Dl_info library{};
  std::array<char, PATH_MAX> path{};
  if (dladdr(address, &library) == 0 || realpath(library.dli_fname, path.data()) == nullptr) return {};
  return path.data();
}

}  // namespace

std::int32_t GetClassObject(std::span<const OfferedClass> offered, const char* class_name,
                            automation_object** class_object, automation_error* error) noexcept {
  *class_object = nullptr;
  *error = {};
  try {
    std::string known;
    for (const OfferedClass& candidate : offered) {
      if (automation::SameName(candidate.name, class_name)) {
        *class_object = ShowClass(candidate.make, &candidate).Release();
        return 0;
      }
      known += (known.empty() ? "" : ", ") + std::string(candidate.name);
    }
    throw host::AutomationError(host::kCannotCreateObject, "QKEL4x",
                                "There is no class " + std::string(class_name) + "; there are " + known);
  } catch (...) {
    CatchInto(*error);
    return 1;
  }
}

std::int32_t Register(std::span<const OfferedClass> offered, void* address) noexcept {
  const std::string library = LibraryOf(address);
  for (const OfferedClass& known : offered) {
    if (automation_register(known.name, library.c_str()) != 0) return 1;
  }
  return 0;
}

std::int32_t Unregister(std::span<const OfferedClass> offered, void* address) noexcept {
  const std::string library = LibraryOf(address);
  std::int32_t failed = 0;
  for (const OfferedClass& known : offered) failed |= automation_unregister(known.name, library.c_str());
  return failed;
}

}  // namespace border

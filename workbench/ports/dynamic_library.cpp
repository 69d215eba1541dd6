#include "workbench/ports/dynamic_library.h"

#ifdef _WIN32
#include <windows.h>

#include <system_error>
#else
#include <dlfcn.h>
#endif

namespace workbench {

#ifdef _WIN32

std::unique_ptr<DynamicLibrary> DynamicLibrary::Load(const std::string& path, std::string& why) {
  void* const handle = reinterpret_cast<void*>(::LoadLibraryA(path.c_str()));
  if (handle == nullptr) {
    why = path + ": " + std::system_category().message(static_cast<int>(::GetLastError()));
    return nullptr;
  }
  return std::unique_ptr<DynamicLibrary>(new DynamicLibrary(handle));
}

DynamicLibrary::~DynamicLibrary() { ::FreeLibrary(static_cast<HMODULE>(handle_)); }

void* DynamicLibrary::Address(const char* name) const {
  return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(handle_), name));
}

#else

std::unique_ptr<DynamicLibrary> DynamicLibrary::Load(const std::string& path, std::string& why) {
  void* const handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    const char* const text = ::dlerror();
    why = text != nullptr ? text : path;
    return nullptr;
  }
  return std::unique_ptr<DynamicLibrary>(new DynamicLibrary(handle));
}

DynamicLibrary::~DynamicLibrary() { ::dlclose(handle_); }

void* DynamicLibrary::Address(const char* name) const { return ::dlsym(handle_, name); }

#endif

}  // namespace workbench

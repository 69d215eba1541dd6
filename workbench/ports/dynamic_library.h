// A shared library that is loaded while the program runs.
#pragma once

#include <memory>
#include <string>

namespace workbench {

/// Stays loaded as long as this object lives.
class DynamicLibrary {
 public:
  /// None where it cannot be loaded, with the reason in `why`.
  static std::unique_ptr<DynamicLibrary> Load(const std::string& path, std::string& why);
  ~DynamicLibrary();
  DynamicLibrary(const DynamicLibrary&) = delete;
  DynamicLibrary& operator=(const DynamicLibrary&) = delete;

  /// The address of a function or variable, null where there is none.
  template <typename T>
  T* Symbol(const char* name) const {
    return reinterpret_cast<T*>(Address(name));
  }

 private:
  explicit DynamicLibrary(void* handle) : handle_(handle) {}
  void* Address(const char* name) const;

  void* handle_;
};

}  // namespace workbench

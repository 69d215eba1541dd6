// libqhost.so: the reference host's classes, for processes that bring no host of their own.
#include <cstdlib>
#include <string_view>
#include <utility>

#include "library/border.h"
#include "library/entry_points.h"
#include "workbench/workbench.h"

namespace {

using border::OfferedClass;
using border::Reference;

/// The one workbench of this process. Never destroyed: ports and nodes may outlive every other object.
workbench::Workbench& Bench() {
  // A test of a host program sets this to let waits cost no time.
  static workbench::Workbench* const bench = [] {
    workbench::Options options;
    options.virtual_clock = std::getenv("QHOST_VIRTUAL_CLOCK") != nullptr;
    options.trace_file = workbench::TraceFileOfEnvironment();
    options.trace_header.program = "libqhost.so";
    return new workbench::Workbench(std::move(options));
  }();
  return *bench;
}

/// A part of the workbench, which lives as long as the process.
template <class Service>
std::shared_ptr<void> Part(Service& service) {
  return {static_cast<void*>(&service), [](void*) {}};
}

Reference MakePort(const void* offered) {
  return border::Show(Bench().CreateTransport(static_cast<const OfferedClass*>(offered)->name));
}

constexpr OfferedClass kOffered[] = {
    {"QAppPar.ParameterNode", [](const void*) { return border::Show(Bench().CreateParameterNode()); }},
    {"QAppInt.ErrorReporter",
     [](const void*) {
       return border::Show(border::kErrorReporter, Part<host::ErrorReporter>(Bench().Errors()));
     }},
    {"QAppInt.HostRuntime",
     [](const void*) {
       return border::Show(border::kHostRuntime, Part<host::HostRuntime>(Bench().Runtime()));
     }},
    {"QAppInt.MessageLog",
     [](const void*) { return border::Show(border::kMessageLog, Part<host::MessageLog>(Bench().Log())); }},
    {"QPort.clsGPIB", &MakePort},
    {"QPort.clsComm", &MakePort},
    {"QPort.clsEthernet", &MakePort},
    {"QPort.clsGUI", &MakePort},
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

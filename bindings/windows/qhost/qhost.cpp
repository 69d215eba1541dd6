// QHost.dll: the reference host's classes under the names that drivers look for, and an application object
// for scripts.
#include "qhost.h"

#include <initguid.h>
#include <wrl/client.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "com/module.h"
#include "com/object.h"
#include "com/text.h"
#include "host/automation_error.h"
#include "qhost/objects.h"
#include "qkel4x.h"
#include "workbench/workbench.h"

using Microsoft::WRL::ComPtr;

namespace qhost {
namespace {

/// The one workbench of this process, made on first use and never destroyed: ports may be at work until the
/// process ends. QHOST_CLOCK=virtual lets waits cost nothing.
workbench::Workbench& TheWorkbench() {
  static workbench::Workbench* const the_workbench = [] {
    workbench::Options options;
    const char* clock = std::getenv("QHOST_CLOCK");
    options.virtual_clock = clock != nullptr && std::string_view(clock) == "virtual";
    options.trace_file = workbench::TraceFileOfEnvironment();
    options.trace_header.program = "QHost.dll";
    auto* made = new workbench::Workbench(std::move(options));
    host::SetCurrentHost(made);
    return made;
  }();
  return *the_workbench;
}

/// One more interface of a driver, for scripts that see the default interface alone.
template <class Interface>
IDispatch* Second(IDispatch* driver, const char* name) {
  ComPtr<Interface> second;
  if (driver == nullptr) {
    throw host::AutomationError(host::kNoObject, "QHost.Application", "There is no driver");
  }
  if (FAILED(driver->QueryInterface(__uuidof(Interface), &second))) {
    throw host::AutomationError(host::kTypeMismatch, "QHost.Application",
                                std::string("The object does not have the interface ") + name);
  }
  return second.Detach();
}

class Application final : public com::Object<com::Dual<::_Application>> {
 public:
  STDMETHODIMP DriverSetup(IDispatch* driver, IDispatch** result) override {
    return Give(result, [&] { return Second<::IDriverSetup>(driver, "IDriverSetup"); });
  }
  STDMETHODIMP DriverIdentify(IDispatch* driver, IDispatch** result) override {
    return Give(result, [&] { return Second<::IDriverIdentify>(driver, "IDriverIdentify"); });
  }
  STDMETHODIMP get_SimulationActive(VARIANT_BOOL* result) override {
    return Give(result,
                [] { return TheWorkbench().Runtime().SimulationActive() ? VARIANT_TRUE : VARIANT_FALSE; });
  }
  STDMETHODIMP put_SimulationActive(VARIANT_BOOL value) override {
    return com::Guarded(__uuidof(Interface),
                        [&] { TheWorkbench().Runtime().SimulationActive(value != VARIANT_FALSE); });
  }
  STDMETHODIMP Interrupt() override {
    return com::Guarded(__uuidof(Interface), [] { TheWorkbench().Interrupt(); });
  }
  STDMETHODIMP ClearInterrupt() override {
    return com::Guarded(__uuidof(Interface), [] { TheWorkbench().ClearInterrupt(); });
  }
  STDMETHODIMP put_LogFile(BSTR value) override {
    return com::Guarded(__uuidof(Interface), [&] {
      workbench::MessageLog& log = TheWorkbench().Log();
      if (sink_ != kNoSink) log.RemoveSink(sink_);
      sink_ = kNoSink;
      const std::wstring path(value, SysStringLen(value));
      if (!path.empty()) sink_ = log.AddSink(workbench::FileSink(std::filesystem::path(path)));
    });
  }

 private:
  static constexpr int kNoSink = -1;

  template <class Work>
  static HRESULT Give(auto* result, const Work& work) {
    if (result == nullptr) return E_POINTER;
    *result = {};
    return com::Guarded(__uuidof(Interface), [&] { *result = work(); });
  }

  int sink_ = kNoSink;
};

template <std::size_t kPosition>
com::PublishedClass Port() {
  const TransportClass& transport = kTransportClasses[kPosition];
  return {transport.id, transport.program_name, transport.description,
          [](REFIID interface_id, void** object) {
            CreateTransport(TheWorkbench().CreateTransport(kTransportClasses[kPosition].name), interface_id,
                            object);
          }};
}

const com::PublishedClass kClasses[] = {
    {&CLSID_ParameterNode, L"QAppPar.ParameterNode", L"A setting or a group of settings",
     [](REFIID interface_id, void** object) {
       CreateNode(TheWorkbench().CreateParameterNode(), interface_id, object);
     }},
    {&CLSID_ErrorReporter, L"QAppInt.ErrorReporter", L"The object through which errors are raised",
     [](REFIID interface_id, void** object) {
       TheWorkbench();
       CreateReporter(interface_id, object);
     }},
    {&CLSID_HostRuntime, L"QAppInt.HostRuntime", L"The host's clock and mode of work",
     [](REFIID interface_id, void** object) {
       TheWorkbench();
       CreateRuntime(interface_id, object);
     }},
    {&CLSID_MessageLog, L"QAppInt.MessageLog", L"The host's message log",
     [](REFIID interface_id, void** object) {
       TheWorkbench();
       CreateLog(interface_id, object);
     }},
    Port<0>(),
    Port<1>(),
    Port<2>(),
    Port<3>(),
    {&CLSID_Application, L"QHost.Application", L"The host application, for scripts",
     [](REFIID interface_id, void** object) { com::Create<Application>(interface_id, object); }},
};

}  // namespace
}  // namespace qhost

namespace com {

const Module kModule{"QHost", "", &LIBID_QHost, qhost::kClasses};

}  // namespace com

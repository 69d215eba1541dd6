#include "python_host.h"

#include <exception>
#include <utility>

#include "call.h"
#include "host/automation_error.h"
#include "transport.h"
#include "values.h"

namespace binding {
namespace {

thread_local workbench::Workbench* bench_of_call = nullptr;

py::object OrNothing(const py::dict& state, const char* key) { return state[key]; }

void RequireCallable(const py::object& function, const char* what) {
  if (function.is_none() || PyCallable_Check(function.ptr()) != 0) return;
  throw py::type_error(std::string(what) + " takes a function, not '" +
                       std::string(py::str(py::type::of(function).attr("__name__"))) + "'");
}

workbench::Options OptionsWithTrace(const std::string& trace_file) {
  workbench::Options options;
  options.trace_file = trace_file;
  if (trace_file.empty()) options.trace_file = workbench::TraceFileOfEnvironment();
  options.trace_header.program = "qkel4x";
  return options;
}

/// The process's own workbench. Made when it is first needed, so that a trace file that cannot be opened
/// fails a driver and not the import; never destroyed.
workbench::Workbench& OwnBench() {
  static workbench::Workbench* const own = [] {
    auto* made = new workbench::Workbench(OptionsWithTrace({}));
    made->Runtime().InterruptWhen(&Call::Interrupted);
    return made;
  }();
  return *own;
}

/// Programmatic names count in any letter case.
py::object Key(std::string_view class_name) { return TextToPython(class_name).attr("lower")(); }

}  // namespace

PythonHost& PythonHost::Instance() {
  static auto* const host = new PythonHost;
  return *host;
}

PythonHost::PythonHost() {
  state_["classes"] = py::dict();
  for (const char* const part : {"wait", "simulation", "log", "reporter"}) state_[part] = py::none();
}

workbench::Workbench& PythonHost::Bench() { return bench_of_call != nullptr ? *bench_of_call : OwnBench(); }

PythonHost::OnBench::OnBench(workbench::Workbench* bench) : before_(std::exchange(bench_of_call, bench)) {}

PythonHost::OnBench::~OnBench() { bench_of_call = before_; }

// Creation ----------------------------------------------------------------------------------------

std::shared_ptr<host::ParameterNode> PythonHost::CreateParameterNode() {
  return Bench().CreateParameterNode();
}

std::shared_ptr<host::Transport> PythonHost::CreateTransport(std::string_view class_name) {
  if (has_classes_) {
    std::shared_ptr<host::Transport> transport = InPython(std::string(class_name), [&] {
      const py::dict classes = state_["classes"];
      const py::object key = Key(class_name);
      if (!classes.contains(key)) return std::shared_ptr<host::Transport>();
      const py::object factory = classes[key];
      return WrapTransport(std::string(class_name), factory());
    });
    if (transport) return transport;
  }
  return Bench().CreateTransport(class_name);
}

std::shared_ptr<host::ParameterNode> PythonHost::DefaultSettings(const std::string& class_name) {
  try {
    return Bench().CreateTransport(class_name)->Settings();
  } catch (const host::AutomationError& unknown) {
    if (unknown.Number() != host::kCannotCreateObject) throw;
    std::shared_ptr<host::ParameterNode> group = CreateParameterNode();
    group->Initialise(class_name, 4, 3, "", "");
    return group;
  }
}

// Errors ------------------------------------------------------------------------------------------

void PythonHost::Raise(std::int32_t number, std::string_view source, std::string_view description,
                       std::optional<std::string_view> help_file, std::optional<std::int32_t> help_context) {
  const std::exception_ptr cause = std::current_exception();
  if (has_reporter_) {
    InPython("ErrorReporter", [&] {
      const py::object raise = py::getattr(OrNothing(state_, "reporter"), "Raise", py::none());
      if (!raise.is_none()) raise(number, TextToPython(source), TextToPython(description));
    });
    throw CausedError(host::AutomationError(number, std::string(source), std::string(description)), cause);
  }
  try {
    Bench().Errors().Raise(number, source, description, help_file, help_context);
  } catch (const host::AutomationError& raised) {
    throw CausedError(raised, cause);
  }
}

bool PythonHost::ReportingEnabled() {
  if (!has_reporter_) return Bench().Errors().ReportingEnabled();
  return InPython("ErrorReporter", [&] {
    const py::object enabled =
        py::getattr(OrNothing(state_, "reporter"), "ReportingEnabled", py::bool_(true));
    return PyObject_IsTrue(enabled.ptr()) == 1;
  });
}

void PythonHost::ReportingEnabled(bool enabled) {
  if (!has_reporter_) {
    Bench().Errors().ReportingEnabled(enabled);
    return;
  }
  InPython("ErrorReporter", [&] {
    try {
      OrNothing(state_, "reporter").attr("ReportingEnabled") = py::bool_(enabled);
    } catch (py::error_already_set& refused) {
      // A reporter without the switch always reports.
      if (!refused.matches(PyExc_AttributeError)) throw;
    }
  });
}

// Runtime -----------------------------------------------------------------------------------------

bool PythonHost::SimulationActive() {
  const Simulation simulation = simulation_.load(std::memory_order_relaxed);
  if (simulation != Simulation::kAsk) return simulation == Simulation::kOn;
  return InPython("HostRuntime", [&] {
    const py::object active = OrNothing(state_, "simulation")();
    const int truth = PyObject_IsTrue(active.ptr());
    if (truth < 0) throw py::error_already_set();
    return truth != 0;
  });
}

void PythonHost::Wait(float seconds) {
  if (!has_wait_) {
    Bench().Runtime().Wait(seconds);
    return;
  }
  if (const Call* const call = Call::Current(); call != nullptr && call->IsInterrupted()) {
    throw host::AutomationError(host::kObjectErrorBase + host::kLinkNotOpen, "HostRuntime.Wait",
                                "The host interrupted the wait");
  }
  InPython("HostRuntime.Wait", [&] { OrNothing(state_, "wait")(SecondsToPython(seconds)); });
}

// Log ---------------------------------------------------------------------------------------------

void PythonHost::Append(std::int32_t kind, std::string_view source_tag, std::string_view text,
                        std::string_view detail) {
  if (!has_log_) {
    Bench().Log().Append(kind, source_tag, text, detail);
    return;
  }
  InPython("MessageLog", [&] {
    const py::object log = OrNothing(state_, "log");
    const py::object append = PyCallable_Check(log.ptr()) != 0 ? log : py::object(log.attr("Append"));
    append(kind, TextToPython(source_tag), TextToPython(text), TextToPython(detail));
  });
}

void PythonHost::KindEnabled(std::int32_t kind, bool enabled) {
  if (!has_log_) {
    Bench().Log().KindEnabled(kind, enabled);
    return;
  }
  InPython("MessageLog", [&] {
    const py::object switch_kind = py::getattr(OrNothing(state_, "log"), "KindEnabled", py::none());
    if (!switch_kind.is_none()) switch_kind(kind, enabled);
  });
}

// What Python replaces ----------------------------------------------------------------------------

void PythonHost::Apply() {
  has_classes_ = py::dict(state_["classes"]).size() != 0;
  has_wait_ = !OrNothing(state_, "wait").is_none();
  has_log_ = !OrNothing(state_, "log").is_none();
  has_reporter_ = !OrNothing(state_, "reporter").is_none();
  const py::object simulation = OrNothing(state_, "simulation");
  if (PyCallable_Check(simulation.ptr()) != 0) {
    simulation_ = Simulation::kAsk;
  } else {
    simulation_ = PyObject_IsTrue(simulation.ptr()) == 1 ? Simulation::kOn : Simulation::kOff;
  }
}

void PythonHost::RegisterClass(const std::string& name, py::object factory) {
  if (factory.is_none() || PyCallable_Check(factory.ptr()) == 0) {
    throw py::type_error("register_class takes a function or a class that makes the transport of '" + name +
                         "'");
  }
  py::object classes = state_["classes"];
  classes[Key(name)] = std::move(factory);
  Apply();
}

void PythonHost::UnregisterClass(const std::string& name) {
  state_["classes"].attr("pop")(Key(name), py::none());
  Apply();
}

void PythonHost::SetWait(py::object function) {
  RequireCallable(function, "set_wait");
  state_["wait"] = std::move(function);
  Apply();
}

void PythonHost::SetSimulation(py::object flag) {
  state_["simulation"] = std::move(flag);
  Apply();
}

void PythonHost::SetLog(py::object log) {
  if (!py::hasattr(log, "Append")) RequireCallable(log, "set_log");
  state_["log"] = std::move(log);
  Apply();
}

void PythonHost::SetReporter(py::object reporter) {
  state_["reporter"] = std::move(reporter);
  Apply();
}

py::dict PythonHost::State() const {
  py::dict copy = state_.attr("copy")();
  copy["classes"] = py::object(state_["classes"]).attr("copy")();
  return copy;
}

void PythonHost::Restore(const py::object& state) {
  state_ = state.attr("copy")();
  state_["classes"] = py::object(state["classes"]).attr("copy")();
  Apply();
}

void BindHost(py::module_& module) {
  using workbench::Workbench;
  py::class_<Workbench, std::shared_ptr<Workbench>>(
      module, "Bench", "A host for one driver alone: its own clock, serial device and record of errors.")
      .def(py::init([](bool virtual_clock, const std::string& serial_device, const std::string& trace_file) {
             workbench::Options options = OptionsWithTrace(trace_file);
             options.virtual_clock = virtual_clock;
             if (!serial_device.empty()) {
               options.serial_devices = {serial_device};
               options.virtual_com1 = false;
             }
             auto bench = InComponent([&] { return std::make_shared<Workbench>(options); });
             // The environment's trace is one for the process, however many drivers come and go.
             static std::shared_ptr<workbench::TraceWriter> kept;
             if (trace_file.empty() && bench->Trace()) kept = bench->Trace();
             bench->Runtime().InterruptWhen(&Call::Interrupted);
             return bench;
           }),
           py::arg("virtual_clock"), py::arg("serial_device"), py::arg("trace_file"))
      .def("trace_lost",
           [](Workbench& bench) {
             return TextToPython(bench.Trace() ? bench.Trace()->Lost() : std::string());
           })
      .def("last_error", [](Workbench& bench) {
        const std::vector<workbench::RecordedError> errors = bench.Errors().Recorded();
        return TextToPython(errors.empty() ? std::string() : errors.back().description);
      });
  PythonHost& host = PythonHost::Instance();
  host::SetCurrentHost(&host);
  module.def("register_class", [&host](const std::string& name, py::object factory) {
    host.RegisterClass(name, std::move(factory));
  });
  module.def("unregister_class", [&host](const std::string& name) { host.UnregisterClass(name); });
  module.def("set_wait", [&host](py::object function) { host.SetWait(std::move(function)); });
  module.def("set_simulation", [&host](py::object flag) { host.SetSimulation(std::move(flag)); });
  module.def("set_log", [&host](py::object log) { host.SetLog(std::move(log)); });
  module.def("set_reporter", [&host](py::object reporter) { host.SetReporter(std::move(reporter)); });
  module.def("host_state", [&host] { return host.State(); });
  module.def("restore_host", [&host](const py::object& state) { host.Restore(state); });
}

}  // namespace binding

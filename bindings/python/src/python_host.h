// The host of a Python process: the workbench, any part of which Python code may replace.
#pragma once

#include <pybind11/pybind11.h>

#include <atomic>
#include <memory>
#include <string>
#include <string_view>

#include "host/host.h"
#include "workbench/workbench.h"

namespace binding {

namespace py = pybind11;

/// Any thread may call it; what was registered from Python runs under the interpreter lock.
class PythonHost final : public host::Host,
                         private host::ErrorReporter,
                         private host::HostRuntime,
                         private host::MessageLog {
 public:
  /// The one object, made on first use and never destroyed.
  static PythonHost& Instance();

  host::ErrorReporter& Errors() override { return *this; }
  host::HostRuntime& Runtime() override { return *this; }
  host::MessageLog& Log() override { return *this; }
  std::shared_ptr<host::ParameterNode> CreateParameterNode() override;
  std::shared_ptr<host::Transport> CreateTransport(std::string_view class_name) override;

  /// The settings of the workbench's own port of that class; an empty group of that name for any other.
  std::shared_ptr<host::ParameterNode> DefaultSettings(const std::string& class_name);

  /// Gives this thread another workbench than the process's own, for a driver that has one to itself; null
  /// for none.
  class OnBench {
   public:
    explicit OnBench(workbench::Workbench* bench);
    ~OnBench();
    OnBench(const OnBench&) = delete;
    OnBench& operator=(const OnBench&) = delete;

   private:
    workbench::Workbench* before_;
  };

  // What Python replaces. All need the interpreter lock; None puts the workbench's own part back.
  void RegisterClass(const std::string& name, py::object factory);
  void UnregisterClass(const std::string& name);
  void SetWait(py::object function);
  void SetSimulation(py::object flag);
  void SetLog(py::object log);
  void SetReporter(py::object reporter);
  /// All of it, for Restore.
  py::dict State() const;
  void Restore(const py::object& state);

 private:
  PythonHost();

  // host::ErrorReporter
  void Raise(std::int32_t number, std::string_view source, std::string_view description,
             std::optional<std::string_view> help_file, std::optional<std::int32_t> help_context) override;
  bool ReportingEnabled() override;
  void ReportingEnabled(bool enabled) override;
  // host::HostRuntime
  bool SimulationActive() override;
  void Wait(float seconds) override;
  // host::MessageLog
  void Append(std::int32_t kind, std::string_view source_tag, std::string_view text,
              std::string_view detail) override;
  void KindEnabled(std::int32_t kind, bool enabled) override;

  static workbench::Workbench& Bench();
  void Apply();

  py::dict state_;  // "classes" (a dict), "wait", "simulation", "log", "reporter"
  // What of it there is, so that a driver takes the interpreter lock only where Python has a say.
  std::atomic<bool> has_classes_{false};
  std::atomic<bool> has_wait_{false};
  std::atomic<bool> has_log_{false};
  std::atomic<bool> has_reporter_{false};
  enum class Simulation { kOff, kOn, kAsk };
  std::atomic<Simulation> simulation_{Simulation::kOff};
};

/// Adds the functions of qkel4x.host to the extension module.
void BindHost(py::module_& module);

}  // namespace binding

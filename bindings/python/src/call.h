// One call from Python into the component: the interpreter lock, what interrupts the call, and how its
// failure reaches Python.
#pragma once

#include <pybind11/pybind11.h>

#include <chrono>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "host/automation_error.h"

namespace binding {

namespace py = pybind11;

/// A Python object that threads without the interpreter lock may copy and drop.
class Held {
 public:
  Held() = default;
  explicit Held(py::object object);
  explicit operator bool() const { return object_ != nullptr; }
  /// Needs the interpreter lock.
  py::object Get() const { return py::reinterpret_borrow<py::object>(object_.get()); }

 private:
  std::shared_ptr<PyObject> object_;
};

/// An exception that Python code of the host raised, on its way through the driver. The driver sees its
/// number where it is an AutomationError and a plain failure otherwise; Python gets the very exception back.
class PythonError : public host::AutomationError {
 public:
  PythonError(std::int32_t number, std::string source, std::string description, Held raised)
      : AutomationError(number, std::move(source), std::move(description)), exception_(std::move(raised)) {}
  const Held& Exception() const { return exception_; }

 private:
  Held exception_;
};

/// An error that the driver raised while it handled another one, which Python sees as its cause.
class CausedError : public host::AutomationError {
 public:
  CausedError(const host::AutomationError& error, std::exception_ptr cause)
      : AutomationError(error), cause_(std::move(cause)) {}
  const std::exception_ptr& Cause() const { return cause_; }

 private:
  std::exception_ptr cause_;
};

/// The call that this thread is in. Calls nest where a transport written in Python calls another driver.
class Call {
 public:
  Call();
  ~Call();
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  /// The innermost call of this thread, or null.
  static Call* Current();

  /// Whether this call is to end early: looks at Python's signals on the main thread. Cheap when called
  /// often; takes no interpreter lock that it does not need. The function that the runtime asks during waits.
  static bool Interrupted() noexcept;

  bool IsInterrupted() const { return static_cast<bool>(interruption_); }
  /// Ends the call with that exception (KeyboardInterrupt, SystemExit and their like), whatever the driver
  /// makes of the failure.
  void InterruptWith(Held raised) { interruption_ = std::move(raised); }
  /// Throws the interruption, if there is one. Needs the interpreter lock.
  void ThrowInterruption();

 private:
  bool PollSignals() noexcept;

  Call* outer_;
  Held interruption_;
  std::chrono::steady_clock::time_point polled_;
};

/// Turns the Python exception of a host's function into one that the driver understands. For use in a catch
/// block.
[[noreturn]] void ThrowIntoDriver(py::error_already_set& raised, const std::string& source);

/// Turns a failure of the component into its Python exception and throws that.
[[noreturn]] void ThrowIntoPython(const std::exception_ptr& failure);

/// Runs host code written in Python: takes the interpreter lock and turns what it raises.
template <class Work>
auto InPython(const std::string& source, const Work& work) {
  const py::gil_scoped_acquire lock;
  try {
    return work();
  } catch (py::error_already_set& raised) {
    ThrowIntoDriver(raised, source);
  } catch (const py::cast_error&) {
    throw host::AutomationError(host::kTypeMismatch, source, "Type mismatch");
  }
}

/// Runs work of the component without the interpreter lock and turns what it throws.
template <class Work>
auto InComponent(const Work& work) {
  using Result = std::invoke_result_t<Work>;
  Call call;
  std::exception_ptr failure;
  if constexpr (std::is_void_v<Result>) {
    {
      const py::gil_scoped_release unlocked;
      try {
        work();
      } catch (...) {
        failure = std::current_exception();
      }
    }
    call.ThrowInterruption();
    if (failure) ThrowIntoPython(failure);
  } else {
    std::optional<Result> result;
    {
      const py::gil_scoped_release unlocked;
      try {
        result.emplace(work());
      } catch (...) {
        failure = std::current_exception();
      }
    }
    call.ThrowInterruption();
    if (failure) ThrowIntoPython(failure);
    return std::move(*result);
  }
}

/// Runs quick work that talks to nobody, under the interpreter lock, and turns what it throws.
template <class Work>
auto Quickly(const Work& work) {
  try {
    return work();
  } catch (const host::AutomationError&) {
    ThrowIntoPython(std::current_exception());
  }
}

/// Takes the class AutomationError. Called once, at import.
void PrepareCalls(py::object automation_error);

}  // namespace binding

#include "call.h"

#include <optional>

#include "values.h"

namespace binding {
namespace {

constexpr std::chrono::milliseconds kSignalPeriod{10};
constexpr std::int32_t kPythonFailure = 440;

thread_local Call* current_call = nullptr;
PyObject* automation_error = nullptr;  // the class; never released

py::object NewAutomationError(const host::AutomationError& error) {
  return py::reinterpret_borrow<py::object>(automation_error)(error.Number(), TextToPython(error.Source()),
                                                              TextToPython(error.Description()));
}

py::object ExceptionOf(const std::exception_ptr& failure) {
  try {
    std::rethrow_exception(failure);
  } catch (const PythonError& error) {
    return error.Exception().Get();
  } catch (const CausedError& error) {
    py::object exception = NewAutomationError(error);
    if (error.Cause()) {
      const py::object cause = ExceptionOf(error.Cause());
      if (cause) PyException_SetCause(exception.ptr(), cause.inc_ref().ptr());
    }
    return exception;
  } catch (const host::AutomationError& error) {
    return NewAutomationError(error);
  } catch (const std::bad_alloc&) {
    return py::reinterpret_borrow<py::object>(PyExc_MemoryError)();
  } catch (const std::exception& error) {
    return py::reinterpret_borrow<py::object>(PyExc_RuntimeError)(TextToPython(error.what()));
  } catch (...) {
    return py::reinterpret_borrow<py::object>(PyExc_SystemError)("unknown failure of the component");
  }
}

[[noreturn]] void ThrowException(const py::object& exception) {
  PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(exception.ptr())), exception.ptr());
  throw py::error_already_set();
}

}  // namespace

Held::Held(py::object object)
    : object_(object.release().ptr(), [](PyObject* dropped) {
        if (dropped == nullptr || !Py_IsInitialized()) return;
        const py::gil_scoped_acquire lock;
        Py_DECREF(dropped);
      }) {}

Call::Call() : outer_(current_call), polled_(std::chrono::steady_clock::now()) { current_call = this; }

Call::~Call() { current_call = outer_; }

Call* Call::Current() { return current_call; }

void Call::ThrowInterruption() {
  if (interruption_) ThrowException(interruption_.Get());
}

bool Call::Interrupted() noexcept {
  Call* call = current_call;
  if (call == nullptr) return false;
  return call->IsInterrupted() || call->PollSignals();
}

bool Call::PollSignals() noexcept {
  const auto now = std::chrono::steady_clock::now();
  if (now - polled_ < kSignalPeriod) return false;
  polled_ = now;
  const py::gil_scoped_acquire lock;
  if (PyErr_CheckSignals() == 0) return false;
  PyObject* type = nullptr;
  PyObject* value = nullptr;
  PyObject* trace = nullptr;
  PyErr_Fetch(&type, &value, &trace);
  PyErr_NormalizeException(&type, &value, &trace);
  if (trace != nullptr) PyException_SetTraceback(value, trace);
  Py_XDECREF(type);
  Py_XDECREF(trace);
  try {
    InterruptWith(Held(py::reinterpret_steal<py::object>(value)));
  } catch (const std::exception&) {
    return true;
  }
  return true;
}

void ThrowIntoDriver(py::error_already_set& raised, const std::string& source) {
  const py::object& exception = raised.value();
  if (raised.trace()) PyException_SetTraceback(exception.ptr(), raised.trace().ptr());
  Held held{exception};
  if (PyObject_IsInstance(exception.ptr(), automation_error) == 1) {
    throw PythonError(exception.attr("number").cast<std::int32_t>(), PythonToText(exception.attr("source")),
                      PythonToText(exception.attr("description")), std::move(held));
  }
  if (PyObject_IsInstance(exception.ptr(), PyExc_Exception) != 1 && Call::Current() != nullptr) {
    Call::Current()->InterruptWith(held);
    throw PythonError(host::kObjectErrorBase + host::kLinkNotOpen, source, "The host interrupted the call",
                      std::move(held));
  }
  throw PythonError(kPythonFailure, source,
                    PythonToText(py::str(py::type::of(exception).attr("__name__"))) + ": " +
                        PythonToText(py::str(exception)),
                    std::move(held));
}

void ThrowIntoPython(const std::exception_ptr& failure) {
  try {
    std::rethrow_exception(failure);
  } catch (const py::error_already_set&) {
    throw;
  } catch (const py::builtin_exception&) {
    throw;
  } catch (...) {
    ThrowException(ExceptionOf(failure));
  }
}

void PrepareCalls(py::object error_class) { automation_error = error_class.release().ptr(); }

}  // namespace binding

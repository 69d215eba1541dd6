// Errors at the border: an AutomationError leaves as a result code with error information, and a failed call
// of somebody else's object comes in as an AutomationError.
#pragma once

#include <ole2.h>

#include <cstdint>
#include <exception>
#include <new>

#include "host/automation_error.h"

namespace com {

/// The result code for an error number: numbers with the object-error base as they are, plain numbers in the
/// facility that automation clients take off again (2002 as 0x800A07D2).
HRESULT ResultOf(std::int32_t number);
/// The error number that a client reads for a result code; the platform's own codes become the numbers of
/// runtime faults (DISP_E_OVERFLOW is 6).
std::int32_t NumberOf(HRESULT result);

/// Leaves the error as this thread's error information and returns its result code.
HRESULT Report(const host::AutomationError& error, REFIID interface_id) noexcept;
HRESULT Report(const std::exception& error, REFIID interface_id) noexcept;

/// Fails with what a late-bound call left behind, where `result` says that it failed. `information` is
/// emptied.
void ThrowIfFailed(HRESULT result, EXCEPINFO& information, const char* what);
/// Fails with the thread's error information, where `result` says that the call failed.
void ThrowIfFailed(HRESULT result, const char* what);

/// Runs the work of a published method: no exception leaves.
template <class Work>
HRESULT Guarded(REFIID interface_id, const Work& work) noexcept {
  try {
    work();
    return S_OK;
  } catch (const host::AutomationError& error) {
    return Report(error, interface_id);
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (const std::exception& error) {
    return Report(error, interface_id);
  } catch (...) {
    return E_UNEXPECTED;
  }
}

}  // namespace com

#include "workbench/runtime.h"

#include <algorithm>
#include <string>
#include <thread>

#include "host/automation_error.h"
#include "workbench/text.h"

namespace workbench {
namespace {

using std::chrono::steady_clock;

constexpr double kLongestWait = 1e7;  // seconds; keeps the sum of the clock within its range

[[noreturn]] void RaiseInterrupted(double wanted, double waited) {
  throw host::AutomationError(
      host::kObjectErrorBase + host::kLinkNotOpen, "HostRuntime.Wait",
      "The host interrupted a wait of " + SecondsText(wanted) + " after " + SecondsText(waited));
}

}  // namespace

void Runtime::Wait(float seconds) {
  const double wanted = seconds > 0 ? std::min(static_cast<double>(seconds), kLongestWait) : 0.0;
  if (Interrupted()) RaiseInterrupted(wanted, 0);
  if (clock_ == Clock::kVirtual) {
    simulated_ns_.fetch_add(static_cast<std::int64_t>(wanted * 1e9), std::memory_order_relaxed);
    return;
  }
  const auto begin = steady_clock::now();
  const auto end =
      begin + std::chrono::duration_cast<steady_clock::duration>(std::chrono::duration<double>(wanted));
  for (auto now = begin; now < end; now = steady_clock::now()) {
    std::this_thread::sleep_for(std::min<steady_clock::duration>(kSlice, end - now));
    if (Interrupted()) {
      RaiseInterrupted(wanted, std::chrono::duration<double>(steady_clock::now() - begin).count());
    }
  }
}

double Runtime::Now() const {
  if (clock_ == Clock::kVirtual) {
    return static_cast<double>(simulated_ns_.load(std::memory_order_relaxed)) / 1e9;
  }
  return std::chrono::duration<double>(steady_clock::now() - start_).count();
}

}  // namespace workbench

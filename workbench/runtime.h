// The clock that waits run on, the simulation flag, and the switch that ends waits and transfers early.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

#include "host/host_runtime.h"

namespace workbench {

/// Waits and attempts on a link are cut into slices of this length, after each of which an interruption and
/// the deadline are looked at.
inline constexpr std::chrono::milliseconds kSlice{20};

/// The runtime of the workbench. Any thread may call any member.
class Runtime final : public host::HostRuntime {
 public:
  /// kReal: waits take the time they say. kVirtual: a wait moves simulated time ahead and returns at once.
  enum class Clock { kReal, kVirtual };

  explicit Runtime(Clock clock) : clock_(clock), start_(std::chrono::steady_clock::now()) {}

  bool SimulationActive() override { return simulation_active_.load(std::memory_order_relaxed); }
  void SimulationActive(bool active) { simulation_active_.store(active, std::memory_order_relaxed); }

  /// Waits that many seconds; nothing for zero, a negative number or no number. Fails with kObjectErrorBase +
  /// kLinkNotOpen when the host interrupts, at once where it already has.
  void Wait(float seconds) override;

  /// Seconds since this runtime was made, on the clock that waits run on.
  double Now() const;
  bool IsVirtual() const { return clock_ == Clock::kVirtual; }

  /// Ends every wait and transfer of this host in under 100 ms, and every later one at once, until
  /// ClearInterrupt. One atomic store: a signal handler may call it.
  void Interrupt() noexcept { interrupted_.store(true, std::memory_order_relaxed); }
  void ClearInterrupt() noexcept { interrupted_.store(false, std::memory_order_relaxed); }
  bool Interrupted() const noexcept {
    if (interrupted_.load(std::memory_order_relaxed)) return true;
    const Question question = question_.load(std::memory_order_relaxed);
    return question != nullptr && question();
  }

  /// Whether the wait or transfer of the calling thread is to end, which a host answers that interrupts one
  /// of its threads only.
  using Question = bool (*)() noexcept;
  /// Has that question asked beside the flag, once a slice; null for no longer.
  void InterruptWhen(Question question) noexcept { question_.store(question, std::memory_order_relaxed); }

 private:
  const Clock clock_;
  const std::chrono::steady_clock::time_point start_;
  std::atomic<std::int64_t> simulated_ns_{0};
  std::atomic<bool> simulation_active_{false};
  std::atomic<bool> interrupted_{false};
  std::atomic<Question> question_{nullptr};
  static_assert(std::atomic<bool>::is_always_lock_free);
};

}  // namespace workbench

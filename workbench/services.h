// What the ports of a workbench share with it: the runtime, the error reporter and whoever watches transfers.
#pragma once

#include <atomic>

#include "workbench/error_reporter.h"
#include "workbench/runtime.h"
#include "workbench/transfer_observer.h"

namespace workbench {

/// Held together by the workbench and its ports, so that a port may outlive the workbench.
struct Services {
  explicit Services(Runtime::Clock clock) : runtime(clock) {}

  Runtime runtime;
  ErrorReporter errors;
  std::atomic<TransferObserver*> observer{nullptr};
};

}  // namespace workbench

// What the ports of a workbench share with it: the runtime, the error reporter and whoever watches transfers.
#pragma once

#include <atomic>
#include <memory>
#include <utility>

#include "workbench/error_reporter.h"
#include "workbench/ports/link.h"
#include "workbench/runtime.h"
#include "workbench/transfer_observer.h"

namespace workbench {

/// Held together by the workbench and its ports, so that a port may outlive the workbench.
struct Services {
  explicit Services(Runtime::Clock clock, LinkWrapper wrapper = {})
      : runtime(clock), wrap_link(std::move(wrapper)) {}

  Runtime runtime;
  ErrorReporter errors;
  std::unique_ptr<TransferObserver> tracing;  // where there is a trace: it, and then the user's observer
  std::atomic<TransferObserver*> observer{nullptr};
  const LinkWrapper wrap_link;  ///< empty for none
};

}  // namespace workbench

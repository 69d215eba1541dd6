#include "host/host.h"

#include <atomic>

#include "host/automation_error.h"

namespace host {
namespace {

std::atomic<Host*> current_host{nullptr};

}  // namespace

Host& CurrentHost() {
  Host* host = current_host.load(std::memory_order_acquire);
  if (host == nullptr) throw AutomationError(kNoObject, "QKEL4x", "No host is set in this process");
  return *host;
}

Host* SetCurrentHost(Host* host) { return current_host.exchange(host, std::memory_order_acq_rel); }

}  // namespace host

// Where the driver finds its host: the three singletons, and creation of the host's classes by programmatic
// name.
#pragma once

#include <memory>
#include <string_view>

#include "host/error_reporter.h"
#include "host/export.h"
#include "host/host_runtime.h"
#include "host/message_log.h"
#include "host/parameter_node.h"
#include "host/transport.h"

namespace host {

/// A host application as a driver sees it. The singletons are made by the host on first use and stay until
/// the process ends. Drivers on several threads may call it at the same time.
class Host {
 public:
  virtual ~Host() = default;

  virtual ErrorReporter& Errors() = 0;
  virtual HostRuntime& Runtime() = 0;
  virtual MessageLog& Log() = 0;

  virtual std::shared_ptr<ParameterNode> CreateParameterNode() = 0;
  /// Creates a transport by its programmatic name, for example "QPort.clsEthernet". An unknown name fails
  /// with 429.
  virtual std::shared_ptr<Transport> CreateTransport(std::string_view class_name) = 0;
};

/// The host of this process. Fails with 91 while there is none.
QKEL4X_EXPORT Host& CurrentHost();

/// Makes `host` the host of this process and returns the one before it; null takes the host away. The caller
/// keeps it alive, and changes it only while no driver is at work.
QKEL4X_EXPORT Host* SetCurrentHost(Host* host);

}  // namespace host

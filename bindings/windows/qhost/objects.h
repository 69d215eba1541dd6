// The host interfaces as objects of the platform: shells around any host, the reference host or a test's own.
#pragma once

#include <windows.h>

#include <memory>
#include <string_view>

#include "host/host.h"
#include "host/parameter_node.h"
#include "host/transport.h"

namespace qhost {

/// Make a shell and hand out one of its interfaces. The shells of the singletons ask `host::CurrentHost()` at
/// every call.
void CreateNode(std::shared_ptr<host::ParameterNode> node, REFIID interface_id, void** object);
void CreateTransport(std::shared_ptr<host::Transport> transport, REFIID interface_id, void** object);
void CreateReporter(REFIID interface_id, void** object);
void CreateRuntime(REFIID interface_id, void** object);
void CreateLog(REFIID interface_id, void** object);

/// The programmatic names of the four transports, in the order of kTransportClasses.
struct TransportClass {
  const CLSID* id;
  const wchar_t* program_name;
  const char* name;
  const wchar_t* description;
};
extern const TransportClass kTransportClasses[4];

}  // namespace qhost

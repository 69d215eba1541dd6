// What a GPIB library reports: status words, error numbers and counts. None of it may do more than fail the
// transfer.
#include <dlfcn.h>

#include <memory>
#include <string>

#include "host/automation_error.h"
#include "tests/fuzz/input.h"
#include "tests/fuzz/status_gpib.h"
#include "workbench/workbench.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static void* library = ::dlopen(STATUS_GPIB_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  fuzz::Require(library != nullptr, "the library of the target can be loaded");
  static auto* feed = reinterpret_cast<StatusFeed*>(::dlsym(library, "status_feed"));
  static workbench::Workbench host;
  feed(data, size);

  const auto port = host.CreateTransport("QPort.clsGPIB");
  port->Settings()->Item("Interface")->SetValue(std::string("library"), -1, -1);
  port->Settings()->Item("Library")->SetValue(std::string(STATUS_GPIB_LIBRARY), -1, -1);
  const auto attempt = [](const auto& transfer) {
    try {
      transfer();
    } catch (const host::AutomationError& error) {
      fuzz::Require(error.Code() >= host::kLinkNotOpen && error.Code() <= host::kLinkBusy,
                    "a link error has its number");
      fuzz::Require(!error.Description().empty(), "a link error has words");
    }
  };
  attempt([&] { port->OnLine(true); });
  port->Timeout(0.002F);
  for (int round = 0; round < 3 && port->OnLine(); ++round) {
    attempt([&] {
      const std::string reply = port->Query("QUERY?");
      fuzz::Require(reply.find('\n') == std::string::npos, "a reply line holds no line feed");
    });
    attempt([&] {
      fuzz::Require(port->Blocks()->ReadBlock(9, "BLOCK?").size() == 9, "a block has the asked size");
    });
  }
  return 0;
}

#include "benchmarks/bench_host.h"

#include <stdexcept>

namespace benchmarks {

namespace {

workbench::Options HostOptions(const std::filesystem::path& trace_file) {
  workbench::Options options;
  options.virtual_clock = true;
  options.trace_file = trace_file;
  options.trace_header.program = "benchmarks";
  return options;
}

}  // namespace

BenchHost::BenchHost(Ethernet ethernet, const std::filesystem::path& trace_file)
    : workbench_(HostOptions(trace_file)), before_(host::SetCurrentHost(&workbench_)) {
  // The real ports lend their settings, so that the tree of a driver has its real size.
  const auto answering = [](workbench::TransportFactory real) {
    return [real = std::move(real)] { return std::make_shared<AnsweringPort>(real()->Settings()); };
  };
  workbench_.RegisterTransport("QPort.clsComm", answering(workbench_.UnregisterTransport("QPort.clsComm")));
  if (ethernet == Ethernet::kInProcess) {
    workbench_.RegisterTransport("QPort.clsEthernet",
                                 answering(workbench_.UnregisterTransport("QPort.clsEthernet")));
  }
}

std::unique_ptr<qkel4x::clsKEL4x> BenchHost::NewDriver(std::uint16_t tcp_port) {
  auto driver = std::make_unique<qkel4x::clsKEL4x>();
  const auto settings = driver->Settings();
  settings->Item("Remote Control")->SetValue(std::string("QPort.clsEthernet"), -1, -1);
  settings->Item("Log Messages")->SetValue(std::string("0"), -1, -1);
  if (tcp_port != 0) settings->Item("TCP/IP.Port")->SetValue(std::int32_t{tcp_port}, -1, -1);
  return driver;
}

std::unique_ptr<qkel4x::clsKEL4x> BenchHost::NewDriverOnLine(std::uint16_t tcp_port) {
  auto driver = NewDriver(tcp_port);
  driver->OnLine(true);
  if (!driver->OnLine()) throw std::runtime_error("the driver did not get on line");
  return driver;
}

}  // namespace benchmarks

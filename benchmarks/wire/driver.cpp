// The driver on its TCP port, as a client of the wire benchmarks.
#include <barrier>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "automation/call.h"
#include "benchmarks/allocations.h"
#include "benchmarks/bench_host.h"
#include "benchmarks/wire/wire.h"

namespace {

using benchmarks::BenchHost;
using benchmarks::Heap;

using Round = void (*)(qkel4x::clsKEL4x& driver);

void Typed(qkel4x::clsKEL4x& driver) {
  if (driver.MeasureRfLevel() == 0) throw std::runtime_error("no level");
}

void ByName(qkel4x::clsKEL4x& driver) {
  if (std::get<double>(automation::Get(driver, "MeasureRfLevel")) == 0) throw std::runtime_error("no level");
}

void Screen(qkel4x::clsKEL4x& driver) {
  std::vector<std::uint8_t> picture;
  if (!driver.ScreenShot(qkel4x::kelTransfer, picture) || picture.size() != 32000) {
    throw std::runtime_error("no picture");
  }
}

Round RoundOf(const std::string& what) {
  if (what == "typed" || what == "logged" || what == "traced") return Typed;
  if (what == "named") return ByName;
  if (what == "screen" || what == "screen_traced") return Screen;
  throw std::runtime_error("there is no " + what);
}

void Run(const arguments& asked) {
  const char* trace_file = std::getenv("TRACE_FILE");
  const bool traced = std::string(asked.what).ends_with("traced");
  BenchHost host(BenchHost::Ethernet::kReal, !traced ? "" : trace_file != nullptr ? trace_file : "/dev/null");
  const Round round = RoundOf(asked.what);
  const bool logged = std::string(asked.what) == "logged";
  if (logged) {
    const char* file = std::getenv("LOG_FILE");
    host.Get().Log().AddSink(workbench::FileSink(file != nullptr ? file : "/dev/null"));
  }
  std::vector<std::unique_ptr<qkel4x::clsKEL4x>> drivers;
  for (int i = 0; i < asked.connections; ++i) {
    drivers.push_back(BenchHost::NewDriverOnLine(asked.port));
    if (logged) drivers.back()->Settings()->Item("Log Messages")->SetValue(std::string("-1"), -1, -1);
  }

  std::barrier start_line(asked.connections + 1);
  std::vector<std::thread> threads;
  for (const auto& driver : drivers) {
    threads.emplace_back([&start_line, &asked, round, &driver = *driver] {
      for (long i = 0; i <= asked.count / 10; ++i) round(driver);
      start_line.arrive_and_wait();  // all are warm
      start_line.arrive_and_wait();  // the watch runs
      for (long i = 0; i < asked.count; ++i) round(driver);
    });
  }
  start_line.arrive_and_wait();
  const Heap before = Heap::Now();
  const stopwatch watch = start_stopwatch();
  start_line.arrive_and_wait();
  for (std::thread& thread : threads) thread.join();
  const auto allocations = static_cast<double>(Heap::Now().allocations - before.allocations);
  const long done = asked.count * asked.connections;
  report(watch, done, allocations / static_cast<double>(done));
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Run(parse_arguments(argc, argv, "typed named logged traced screen screen_traced"));
    return 0;
  } catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
  }
}

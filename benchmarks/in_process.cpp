// What the driver itself costs: everything between a call and a port that answers at once.
#include <benchmark/benchmark.h>

#include "automation/call.h"
#include "benchmarks/allocations.h"
#include "benchmarks/bench_host.h"
#include "simulator/instrument.h"

namespace benchmarks {
namespace {

/// Runs `work` for every iteration and counts its allocations.
template <class Work>
void Measure(benchmark::State& state, const Work& work) {
  work();
  const std::uint64_t before = Heap::Now().allocations;
  for (auto _ : state) work();
  state.counters["allocations"] = benchmark::Counter(static_cast<double>(Heap::Now().allocations - before),
                                                     benchmark::Counter::kAvgIterations);
}

void ReadingTyped(benchmark::State& state) {
  BenchHost host(BenchHost::Ethernet::kInProcess);
  const auto driver = BenchHost::NewDriverOnLine();
  Measure(state, [&] { benchmark::DoNotOptimize(driver->MeasureRfLevel()); });
}
BENCHMARK(ReadingTyped);

void ReadingByName(benchmark::State& state) {
  BenchHost host(BenchHost::Ethernet::kInProcess);
  const auto driver = BenchHost::NewDriverOnLine();
  const automation::Object object(*driver);
  Measure(state,
          [&] { benchmark::DoNotOptimize(std::get<double>(automation::Get(object, "MeasureRfLevel"))); });
}
BENCHMARK(ReadingByName);

void ReadingTypedLogOn(benchmark::State& state) {
  BenchHost host(BenchHost::Ethernet::kInProcess);
  host.Get().Log().AddSink(workbench::FileSink("/dev/null"));
  const auto driver = BenchHost::NewDriverOnLine();
  driver->Settings()->Item("Log Messages")->SetValue(std::string("-1"), -1, -1);
  Measure(state, [&] { benchmark::DoNotOptimize(driver->MeasureRfLevel()); });
}
BENCHMARK(ReadingTypedLogOn);

void FrequencyWrite(benchmark::State& state) {
  BenchHost host(BenchHost::Ethernet::kInProcess);
  const auto driver = BenchHost::NewDriverOnLine();
  Measure(state, [&] { driver->RfCenterFrequency(599'309'441.5); });
}
BENCHMARK(FrequencyWrite);

void FrequencyWriteByName(benchmark::State& state) {
  BenchHost host(BenchHost::Ethernet::kInProcess);
  const auto driver = BenchHost::NewDriverOnLine();
  const automation::Object object(*driver);
  Measure(state, [&] { automation::Put(object, "RfCenterFrequency", 599'309'441.5); });
}
BENCHMARK(FrequencyWriteByName);

void Construction(benchmark::State& state) {
  BenchHost host(BenchHost::Ethernet::kReal);
  Measure(state, [&] { benchmark::DoNotOptimize(BenchHost::NewDriver()); });
}
BENCHMARK(Construction);

/// What the simulated instrument takes to answer both exchanges of a reading, without any port.
void SimulatorReading(benchmark::State& state) {
  simulator::Instrument instrument({}, [] { return 1000.0; });
  simulator::Instrument::Answer answer;
  Measure(state, [&] {
    instrument.Execute("SYST:ERR?", answer);
    instrument.Execute("READ:RF:LEVEL?", answer);
    benchmark::DoNotOptimize(answer.bytes.data());
  });
}
BENCHMARK(SimulatorReading);

}  // namespace
}  // namespace benchmarks

BENCHMARK_MAIN();

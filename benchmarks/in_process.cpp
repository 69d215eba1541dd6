// What the driver itself costs: everything between a call and a port that answers at once.
#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>

#include "automation/call.h"
#include "benchmarks/allocations.h"
#include "benchmarks/bench_host.h"
#include "simulator/instrument.h"
#include "workbench/trace_writer.h"

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

/// The four lines of a reading in a trace, on top of what the port does for it.
void TraceOfReading(benchmark::State& state) {
  const auto file = std::filesystem::temp_directory_path() / "qkel4x_benchmark_%p.ndjson";
  std::filesystem::path made;
  {
    const auto trace = workbench::TraceWriter::Open(file, {"benchmarks", {}, {}, {}, {}});
    made = trace->File();
    workbench::TransferRecord record;
    record.kind = workbench::TransferRecord::Kind::kExchange;
    record.port = "QPort.clsEthernet";
    record.peer = "127.0.0.1:35683";
    record.seconds = 14e-6;
    Measure(state, [&] {
      record.begin = std::chrono::system_clock::now();
      record.sent = "SYST:ERR?";
      record.received = "0,\"No error\"";
      trace->Observe(record);
      record.begin = std::chrono::system_clock::now();
      record.sent = "READ:RF:LEVEL?";
      record.received = "-45.3";
      trace->Observe(record);
    });
  }
  std::filesystem::remove(made);
}
// A bounded number of rounds, since the file grows by half a kilobyte with each.
BENCHMARK(TraceOfReading)->Iterations(40'000);

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

// Reads one level again and again over a port that answers in process: what benchmarks/check-instructions
// counts.
#include <cstdlib>
#include <string_view>

#include "automation/call.h"
#include "benchmarks/bench_host.h"

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const bool by_name = std::string_view(argv[1]) == "named";
  const int count = std::atoi(argv[2]);
  const benchmarks::BenchHost host(benchmarks::BenchHost::Ethernet::kInProcess);
  const auto driver = benchmarks::BenchHost::NewDriverOnLine();
  double sum = 0;
  for (int i = 0; i < count; ++i) {
    sum += by_name ? std::get<double>(automation::Get(*driver, "MeasureRfLevel")) : driver->MeasureRfLevel();
  }
  return sum < 0 ? 0 : 1;
}

// Usage: bench_core SIZE... [--benchmark_...]. Measures the core by Google Benchmark.
#include <benchmark/benchmark.h>

#include <cstdlib>

#include "bench/CoreCases.h"

namespace {

void add(const Vastel_Connect::bench::CoreCase& each) {
  const std::string name = each.step + "/" + each.contestant + "/" + std::to_string(each.size);
  benchmark::RegisterBenchmark(name.c_str(), [run = each.run](benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) run();
  });
}

}  // namespace

int main(int argc, char** argv) {
  using namespace Vastel_Connect::bench;
  benchmark::Initialize(&argc, argv);
  for (const CoreCase& each : logCases()) add(each);
  for (int i = 1; i < argc; ++i) {
    for (const CoreCase& each : coreCases(std::strtoul(argv[i], nullptr, 10))) add(each);
  }
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}

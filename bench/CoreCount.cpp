// Usage: valgrind --tool=callgrind --collect-atstart=no bench_core_count SIZE... Writes the counts
// of each case of the core to a dump of its own, whose trigger is the case's name.
#include <valgrind/callgrind.h>

#include <cstdlib>

#include "bench/CoreCases.h"

namespace {

void count(const Vastel_Connect::bench::CoreCase& each) {
  const std::string name = each.step + "/" + each.contestant + "/" + std::to_string(each.size);
  // The first call of all binds symbols and fills the heap, which does not show in large cases.
  if (each.size <= 65536) each.run();
  CALLGRIND_ZERO_STATS;
  CALLGRIND_TOGGLE_COLLECT;
  each.run();
  CALLGRIND_TOGGLE_COLLECT;
  CALLGRIND_DUMP_STATS_AT(name.c_str());
}

}  // namespace

int main(int argc, char** argv) {
  using namespace Vastel_Connect::bench;
  for (const CoreCase& each : logCases()) count(each);
  for (int i = 1; i < argc; ++i) {
    for (const CoreCase& each : coreCases(std::strtoul(argv[i], nullptr, 10))) count(each);
  }
  return 0;
}

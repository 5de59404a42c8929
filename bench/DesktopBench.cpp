// Usage: bench_desktop ROUNDS LINKS RESULTS [TOPIC...]. Measures the program on a desktop against
// the least that could be done instead, side by side. The topics are road, start,
// load and core.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/Topics.h"

int main(int argc, char** argv) {
  using namespace Vastel_Connect::bench;
  if (argc < 4) {
    std::fprintf(stderr, "usage: bench_desktop ROUNDS LINKS RESULTS [TOPIC...]\n");
    return 2;
  }
  const int rounds = std::atoi(argv[1]);
  const Programs programs;
  Desktop desktop(programs.handler());
  Samples samples;
  const std::vector<std::string> topics(argv + 4, argv + argc);
  const auto wanted = [&topics](const char* topic) {
    return topics.empty() || std::find(topics.begin(), topics.end(), topic) != topics.end();
  };
  if (wanted("road")) measureRoad(samples, desktop, programs, rounds);
  if (wanted("start")) measureStart(samples, desktop, programs, rounds);
  if (wanted("load")) measureLoad(samples, desktop, programs, rounds, std::atoi(argv[2]));
  if (wanted("core")) measureCore(samples, rounds / 10 + 3);
  samples.write(argv[3]);
  return 0;
}

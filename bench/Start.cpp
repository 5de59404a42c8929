#include "bench/Process.h"
#include "bench/Topics.h"

namespace Vastel_Connect::bench {
namespace {

double startToName(Desktop& desktop, const std::vector<std::string>& arguments,
                   const std::string& name) {
  const std::int64_t begin = now();
  const pid_t process = start(arguments);
  const std::int64_t end = desktop.waitForName(name, true);
  stop(process);
  desktop.waitForName(name, false);
  return static_cast<double>(end - begin) / 1e6;
}

}  // namespace

void measureStart(Samples& samples, Desktop& desktop, const Programs& programs, int rounds) {
  const auto peer = [&desktop](const std::vector<std::string>& arguments) {
    return [&desktop, arguments] { return startToName(desktop, arguments, kPeerName); };
  };
  const Contestant ours{"ours", [&] { return startToName(desktop, {programs.connect}, kName); }};
  samples.compare("start", "start to name", "ms", rounds,
                  {ours,
                   {"sd-bus in C", peer({programs.folder + "/bench_bare_sd_bus"})},
                   {"GApplication in C", peer({programs.folder + "/bench_bare_gapplication"})}});
  samples.compare(
      "start", "start to name, slow peers", "ms", rounds / 8 + 3,
      {ours, {"PyGObject", peer({"/usr/bin/python3", BENCH_PEERS "/bare_gapplication.py"})}});
}

}  // namespace Vastel_Connect::bench

#include <fstream>

#include "bench/Process.h"
#include "bench/Topics.h"

namespace Vastel_Connect::bench {
namespace {

/// {"ScriptType":"CSD"}
constexpr const char* kLink = "screenpop:eyJTY3JpcHRUeXBlIjoiQ1NEIn0=";
constexpr int kWindow = 64;
constexpr int kBlock = 5000;

int answered = 0;

int onAnswer(sd_bus_message* answer, void* /*userdata*/, sd_bus_error* /*error*/) {
  if (sd_bus_message_is_method_error(answer, nullptr) > 0) fail("a link was refused");
  ++answered;
  return 1;
}

/// Links per second, with so many on their way at a time that nobody waits for the other.
double sendLinks(sd_bus* bus, const char* name, const char* path, int count) {
  const std::int64_t begin = now();
  answered = 0;
  for (int sent = 0; answered < count;) {
    for (; sent < count && sent - answered < kWindow; ++sent) {
      if (sd_bus_call_method_async(bus, nullptr, name, path, "org.freedesktop.Application", "Open",
                                   onAnswer, nullptr, "asa{sv}", 1, kLink, 0) < 0) {
        fail("Open failed");
      }
    }
    const int processed = sd_bus_process(bus, nullptr);
    if (processed < 0 || (processed == 0 && sd_bus_wait(bus, UINT64_MAX) < 0)) fail("no bus");
  }
  return count * 1e9 / static_cast<double>(now() - begin);
}

/// The program's private memory in KiB.
double privateMemory(pid_t process) {
  std::ifstream rollup("/proc/" + std::to_string(process) + "/smaps_rollup");
  for (std::string word; rollup >> word;) {
    double value = 0;
    if (word == "Private_Dirty:" && rollup >> value) return value;
  }
  fail("no figures of memory");
}

}  // namespace

void measureLoad(Samples& samples, Desktop& desktop, const Programs& programs, int rounds,
                 int links) {
  const pid_t application = start({programs.connect});
  desktop.waitForName(kName, true);
  const pid_t peer = start({programs.folder + "/bench_bare_sd_bus"});
  desktop.waitForName(kPeerName, true);
  const auto ours = [&](int count) {
    return sendLinks(desktop.bus(), kName.c_str(), "/com/vastel/Connect", count);
  };
  samples.compare("load", "links that open nothing", "1/s", rounds,
                  {{"ours", [&] { return ours(kBlock); }}, {"sd-bus in C, empty method", [&] {
                                                              return sendLinks(
                                                                  desktop.bus(), kPeerName.c_str(),
                                                                  "/com/vastel/Bare", kBlock);
                                                            }}});
  stop(peer);

  const double before = privateMemory(application);
  ours(links);
  samples.add("load", "growth after " + std::to_string(links) + " links", "KiB", "ours",
              privateMemory(application) - before);
  stop(application);
  desktop.waitForName(kName, false);
}

}  // namespace Vastel_Connect::bench

#include <sys/wait.h>

#include "bench/Process.h"
#include "bench/Topics.h"

namespace Vastel_Connect::bench {
namespace {

/// {"WebPage":"https://crm.example/48213"}
constexpr const char* kLink = "screenpop:eyJXZWJQYWdlIjoiaHR0cHM6Ly9jcm0uZXhhbXBsZS80ODIxMyJ9";
constexpr const char* kPage = "https://crm.example/48213";

using Arguments = std::vector<std::string>;

double milliseconds(std::int64_t begin, std::int64_t end) {
  return static_cast<double>(end - begin) / 1e6;
}

double openOnBus(const Desktop& desktop) {
  const std::int64_t begin = now();
  if (sd_bus_call_method(desktop.bus(), kName.c_str(), "/com/vastel/Connect",
                         "org.freedesktop.Application", "Open", nullptr, nullptr, "asa{sv}", 1,
                         kLink, 0) < 0) {
    fail("Open failed");
  }
  return milliseconds(begin, desktop.handlerStart());
}

double startUntilHandler(const Desktop& desktop, const Arguments& arguments) {
  const std::int64_t begin = now();
  const pid_t process = start(arguments);
  const double time = milliseconds(begin, desktop.handlerStart());
  ::waitpid(process, nullptr, 0);
  return time;
}

}  // namespace

void measureRoad(Samples& samples, Desktop& desktop, const Programs& programs, int rounds) {
  const auto byProgram = [&desktop](const PageOpener& program) {
    return [&] {
      const std::int64_t begin = program.open(kPage);
      return milliseconds(begin, desktop.handlerStart());
    };
  };
  const auto byCommand = [&desktop](const Arguments& arguments) {
    return [&desktop, arguments] { return startUntilHandler(desktop, arguments); };
  };
  const PageOpener ours({programs.folder + "/bench_open_pages"});
  const PageOpener gio({programs.folder + "/bench_open_pages_gio"});
  const PageOpener spawn(
      {programs.folder + "/bench_open_pages_spawn", programs.handler(), desktop.socketPath()});
  const Contestant floor{"posix_spawn", byProgram(spawn)};
  samples.compare("road", "opening call to handler", "ms", rounds,
                  {{"ours", byProgram(ours)}, floor, {"GIO in-process", byProgram(gio)}});
  samples.compare("road", "opening call to handler, slow peers", "ms", rounds / 8 + 3,
                  {{"ours", byProgram(ours)},
                   {"gio open", byCommand({"gio", "open", kPage})},
                   {"xdg-open, generic", byCommand({"xdg-open", kPage})}});

  const pid_t application = start({programs.connect});
  desktop.waitForName(kName, true);
  samples.compare(
      "road", "Open to handler", "ms", rounds,
      {{"ours", [&] { return openOnBus(desktop); }}, floor, {"GIO in-process", byProgram(gio)}});
  const pid_t bare = start({programs.folder + "/bench_bare_sd_bus"});
  desktop.waitForName(kPeerName, true);
  samples.compare("road", "Exec to handler", "ms", rounds,
                  {{"ours", byCommand({programs.connect, kLink})},
                   floor,
                   {"sd-bus in C and posix_spawn",
                    byCommand({programs.folder + "/bench_bare_call", kLink, programs.handler(),
                               desktop.socketPath(), kPage})}});
  stop(bare);
  stop(application);
  desktop.waitForName(kName, false);
}

}  // namespace Vastel_Connect::bench

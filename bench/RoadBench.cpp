// Usage: bench_road PROGRAM HANDLER BARE_BUS ROUNDS RESULTS. Measures the road of a link against
// the least that could be done instead, side by side in one run, prints a table, and writes it as
// JSON.
#include <sys/wait.h>

#include <algorithm>
#include <boost/json.hpp>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>

#include "bench/Desktop.h"

namespace Vastel_Connect::bench {
namespace {

/// {"WebPage":"https://crm.example/48213"}
constexpr const char* kLink = "screenpop:eyJXZWJQYWdlIjoiaHR0cHM6Ly9jcm0uZXhhbXBsZS80ODIxMyJ9";
constexpr const char* kPage = "https://crm.example/48213";

struct Spread {
  double median;
  double tenth;
  double ninetieth;
};

Spread spread(std::vector<std::int64_t> nanoseconds) {
  std::sort(nanoseconds.begin(), nanoseconds.end());
  const auto at = [&nanoseconds](std::size_t percent) {
    return static_cast<double>(nanoseconds[(nanoseconds.size() - 1) * percent / 100]) / 1e6;
  };
  return {.median = at(50), .tenth = at(10), .ninetieth = at(90)};
}

class Report {
 public:
  Report() {
    std::printf("%-44s %9s %17s %9s %7s\n", "milliseconds, median", "ours", "(10 % to 90 %)",
                "peer", "ratio");
  }

  void add(const std::string& name, const std::string& peer, const Spread& ours,
           const Spread& theirs, std::size_t runs) {
    const double ratio = ours.median / theirs.median;
    std::printf("%-44s %9.3f (%6.3f to %6.3f) %9.3f %7.2f\n", (name + " / " + peer).c_str(),
                ours.median, ours.tenth, ours.ninetieth, theirs.median, ratio);
    rows_.push_back(boost::json::object{{"name", name},
                                        {"unit", "ms"},
                                        {"ours", ours.median},
                                        {"spread", {ours.tenth, ours.ninetieth}},
                                        {"peers", {{peer, theirs.median}}},
                                        {"ratio", ratio},
                                        {"runs", runs}});
  }

  void write(const char* path) const {
    std::ofstream(path) << boost::json::serialize(rows_) << "\n";
  }

 private:
  boost::json::array rows_;
};

/// One measurement, in nanoseconds.
using Measure = std::function<std::int64_t()>;

/// Measures both in turn, so that whatever else the machine does falls on both.
void compare(Report& report, int rounds, const std::string& name, const Measure& ours,
             const std::string& peer, const Measure& theirs) {
  std::vector<std::int64_t> oursTimes;
  std::vector<std::int64_t> theirTimes;
  for (int round = 0; round < rounds; ++round) {
    oursTimes.push_back(ours());
    theirTimes.push_back(theirs());
  }
  report.add(name, peer, spread(oursTimes), spread(theirTimes), oursTimes.size());
}

std::int64_t untilHandler(const Desktop& desktop, std::int64_t begin) {
  const auto started = desktop.handlerStart();
  if (!started) {
    std::fprintf(stderr, "bench: no handler was started\n");
    std::exit(1);
  }
  return *started - begin;
}

std::int64_t openOnBus(const Desktop& desktop) {
  const std::int64_t begin = now();
  if (sd_bus_call_method(desktop.bus(), "com.vastel.Connect", "/com/vastel/Connect",
                         "org.freedesktop.Application", "Open", nullptr, nullptr, "asa{sv}", 1,
                         kLink, 0) < 0) {
    std::fprintf(stderr, "bench: Open failed\n");
    std::exit(1);
  }
  return untilHandler(desktop, begin);
}

std::int64_t startAndReap(const Desktop& desktop, const std::vector<std::string>& arguments) {
  const std::int64_t begin = now();
  const pid_t process = start(arguments);
  const std::int64_t time = untilHandler(desktop, begin);
  ::waitpid(process, nullptr, 0);
  return time;
}

std::int64_t startToName(Desktop& desktop, const std::string& program, const std::string& name) {
  const std::int64_t begin = now();
  const pid_t process = start({program});
  const std::int64_t end = desktop.waitForName(name, true);
  stop(process);
  desktop.waitForName(name, false);
  return end - begin;
}

}  // namespace
}  // namespace Vastel_Connect::bench

int main(int argc, char** argv) {
  using namespace Vastel_Connect::bench;
  if (argc != 6) {
    std::fprintf(stderr, "usage: bench_road PROGRAM HANDLER BARE_BUS ROUNDS RESULTS\n");
    return 2;
  }
  const std::string program = argv[1];
  const std::string handler = argv[2];
  const int rounds = std::atoi(argv[4]);
  Desktop desktop(handler);
  Report report;

  compare(
      report, rounds, "start to name",
      [&] { return startToName(desktop, program, "com.vastel.Connect"); }, "bare sd-bus in C",
      [&] { return startToName(desktop, argv[3], "com.vastel.Bare"); });

  const pid_t application = start({program});
  desktop.waitForName("com.vastel.Connect", true);
  const Measure floor = [&] {
    return startAndReap(desktop, {handler, desktop.socketPath(), kPage});
  };
  compare(
      report, rounds, "Open to handler", [&] { return openOnBus(desktop); }, "posix_spawn", floor);
  compare(
      report, rounds, "Exec to handler",
      [&] {
        return startAndReap(desktop, {program, kLink});
      },
      "posix_spawn", floor);
  stop(application);
  report.write(argv[5]);
  return 0;
}

#pragma once

#include <sys/types.h>
#include <systemd/sd-bus.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Vastel_Connect::bench {

/// CLOCK_MONOTONIC in nanoseconds.
[[nodiscard]] std::int64_t now();

/// Starts a program with the environment of this process. Its standard output goes to /dev/null.
pid_t start(const std::vector<std::string>& arguments);

/// Sends SIGTERM and waits for the end.
void stop(pid_t process);

/// A desktop of its own for the time of a measurement: folders, a session bus, and `handlerProgram`
/// as the default handler of https among many other entries. The process's environment points at
/// it.
class Desktop {
 public:
  explicit Desktop(const std::string& handlerProgram);
  ~Desktop();
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;

  [[nodiscard]] sd_bus* bus() const { return bus_; }
  /// The argument of the handler that tells it where to report.
  [[nodiscard]] std::string socketPath() const { return folder_ + "/socket"; }
  /// The time at which the next handler began; absent when none did for five seconds.
  [[nodiscard]] std::optional<std::int64_t> handlerStart() const;
  /// Waits for the name to have an owner (or none), and returns the time.
  std::int64_t waitForName(const std::string& name, bool owned);

 private:
  void writeEntries(const std::string& handlerProgram) const;

  std::string folder_;
  int channel_ = -1;
  pid_t daemon_ = -1;
  sd_bus* bus_ = nullptr;
};

}  // namespace Vastel_Connect::bench

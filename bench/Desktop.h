#pragma once

#include <sys/types.h>
#include <systemd/sd-bus.h>

#include <cstdint>
#include <string>

namespace Vastel_Connect::bench {

/// A desktop of its own for the time of a measurement: folders, a session bus, and `handlerProgram`
/// as the default handler of https among as many other entries as a full desktop has. The process's
/// environment points at it.
class Desktop {
 public:
  explicit Desktop(const std::string& handlerProgram);
  ~Desktop();
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;

  [[nodiscard]] sd_bus* bus() const { return bus_; }
  /// The argument of the handler that tells it where to report.
  [[nodiscard]] std::string socketPath() const { return folder_ + "/socket"; }
  /// The time at which the next handler began. It ends the measurement when none does.
  [[nodiscard]] std::int64_t handlerStart() const;
  /// Waits for the name to have an owner (or none), and returns the time.
  std::int64_t waitForName(const std::string& name, bool owned);

 private:
  void makeEnvironment() const;
  void writeEntries(const std::string& handlerProgram) const;
  void startBus();

  std::string folder_;
  int channel_ = -1;
  pid_t daemon_ = -1;
  sd_bus* bus_ = nullptr;
};

}  // namespace Vastel_Connect::bench

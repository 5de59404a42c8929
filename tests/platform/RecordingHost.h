#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "app/AppDelegate.h"

namespace Vastel_Connect {

/// A host that talks to no desktop. It keeps one list of all that the program asks of it, in order,
/// and opens no page. Its clock stands still.
class RecordingHost {
 public:
  static RecordingHost& instance();

  /// Forgets the list.
  void reset();

  /// "print: <line>", "open: <url>", "read arguments", "terminate", "set handler" and "remove
  /// handler", in the order of the calls.
  [[nodiscard]] std::vector<std::string> events() const;
  /// What follows `kind` in each event that begins with it.
  [[nodiscard]] std::vector<std::string> eventsOf(std::string_view kind) const;
  void record(std::string_view kind, std::string_view value = {});

  std::vector<std::string> arguments;
  /// The first that asked for the host.
  const std::thread::id mainThread = std::this_thread::get_id();

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> events_;
};

/// A fixture whose host is fresh in each test.
template <typename Base>
class WithRecordingHost : public Base {
 protected:
  WithRecordingHost() { host.reset(); }
  RecordingHost& host = RecordingHost::instance();
};

}  // namespace Vastel_Connect

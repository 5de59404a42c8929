#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "app/AppDelegate.h"

namespace Vastel_Connect {

/// A host that talks to no desktop. It keeps one list of all that the program asks of it, in order,
/// and answers as it was told to. Its clock stands still.
class RecordingHost {
 public:
  static RecordingHost& instance();

  /// Forgets everything. The caller's thread becomes the main thread.
  void reset();

  /// "print: <line>", "open: <url>", "terminate", "set handler" and "remove handler", in the order
  /// of the calls.
  [[nodiscard]] std::vector<std::string> events() const;
  /// What follows `kind` in each event that begins with it.
  [[nodiscard]] std::vector<std::string> eventsOf(std::string_view kind) const;
  void record(std::string_view kind, std::string_view value = {});

  std::vector<std::string> arguments = {"/usr/bin/vastel-connect"};
  /// What openUrl answers.
  bool opens = true;
  /// Whether the list is kept: it would count in a measurement.
  bool records = true;
  /// How many events there were when the arguments were read last.
  std::size_t eventsBeforeArguments = 0;
  std::thread::id mainThread = std::this_thread::get_id();

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

#pragma once

#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "app/AppDelegate.h"

namespace Vastel_Connect {

/// A host that talks to no desktop. It keeps one list of all that the program asks of it, in order,
/// and answers as it was told to.
class RecordingHost {
 public:
  static RecordingHost& instance();

  /// Forgets everything. The caller's thread becomes the main thread.
  void reset();

  /// "print: <line>", "open: <url>", "terminate", "set handler <class> <id>" and "remove handler
  /// <class> <id>", in the order of the calls.
  [[nodiscard]] std::vector<std::string> events() const;
  void record(std::string event);

  std::vector<std::string> arguments = {"/usr/bin/vastel-connect"};
  /// The current date in the patterns that the program uses.
  std::map<std::string, std::string, std::less<>> dateTexts;
  /// What openUrl answers.
  bool opens = true;
  std::thread::id mainThread;
  AppDelegate* handler = nullptr;

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

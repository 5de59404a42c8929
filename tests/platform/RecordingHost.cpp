#include "tests/platform/RecordingHost.h"

#include <cstdlib>

#include "platform/Platform.h"

namespace Vastel_Connect {

RecordingHost& RecordingHost::instance() {
  static RecordingHost host;
  return host;
}

void RecordingHost::reset() {
  const std::lock_guard lock(mutex_);
  events_.clear();
}

std::vector<std::string> RecordingHost::events() const {
  const std::lock_guard lock(mutex_);
  return events_;
}

std::vector<std::string> RecordingHost::eventsOf(std::string_view kind) const {
  std::vector<std::string> values;
  for (const std::string& event : events()) {
    if (event.starts_with(kind)) values.push_back(event.substr(kind.size()));
  }
  return values;
}

void RecordingHost::record(std::string_view kind, std::string_view value) {
  const std::lock_guard lock(mutex_);
  events_.push_back(std::string(kind).append(value));
}

namespace platform {

std::vector<std::string> processArguments() {
  RecordingHost::instance().record("read arguments");
  return RecordingHost::instance().arguments;
}

void setUriEventHandler() {
  RecordingHost::instance().record("set handler");
}

void removeUriEventHandler() {
  RecordingHost::instance().record("remove handler");
}

void terminate() {
  RecordingHost::instance().record("terminate");
}

bool isMainThread() {
  return std::this_thread::get_id() == RecordingHost::instance().mainThread;
}

std::string logTime() {
  return "14:07:09";
}

std::string jsonLogDate() {
  return "2018-03-05T14:07:09+0100";
}

bool openUrl(std::string_view url) {
  RecordingHost::instance().record("open: ", url);
  return false;
}

void printLine(std::string_view line) {
  RecordingHost::instance().record("print: ", line);
}

void stopProgram() {
  std::_Exit(kStopStatus);
}

}  // namespace platform
}  // namespace Vastel_Connect

#include "tests/platform/RecordingHost.h"

#include <cstdio>
#include <utility>

#include "platform/Platform.h"

namespace Vastel_Connect {
namespace {

std::string hexText(std::uint32_t code) {
  char text[11];
  std::snprintf(text, sizeof text, "0x%08X", code);
  return text;
}

}  // namespace

RecordingHost& RecordingHost::instance() {
  static RecordingHost host;
  return host;
}

void RecordingHost::reset() {
  const std::lock_guard lock(mutex_);
  events_.clear();
  arguments = {"/usr/bin/vastel-connect"};
  dateTexts = {{"HH:mm:ss", "14:07:09"}, {"yyyy-MM-dd'T'HH:mm:ssZ", "2018-03-05T14:07:09+0100"}};
  opens = true;
  mainThread = std::this_thread::get_id();
  handler = nullptr;
}

std::vector<std::string> RecordingHost::events() const {
  const std::lock_guard lock(mutex_);
  return events_;
}

void RecordingHost::record(std::string event) {
  const std::lock_guard lock(mutex_);
  events_.push_back(std::move(event));
}

namespace platform {

std::vector<std::string> processArguments() {
  return RecordingHost::instance().arguments;
}

void setUriEventHandler(AppDelegate& handler, std::uint32_t eventClass, std::uint32_t eventId) {
  RecordingHost::instance().handler = &handler;
  RecordingHost::instance().record("set handler " + hexText(eventClass) + " " + hexText(eventId));
}

void removeUriEventHandler(std::uint32_t eventClass, std::uint32_t eventId) {
  RecordingHost::instance().handler = nullptr;
  RecordingHost::instance().record("remove handler " + hexText(eventClass) + " " +
                                   hexText(eventId));
}

void terminate() {
  RecordingHost::instance().record("terminate");
}

bool isMainThread() {
  return std::this_thread::get_id() == RecordingHost::instance().mainThread;
}

std::string currentDateText(std::string_view pattern) {
  const auto& texts = RecordingHost::instance().dateTexts;
  const auto found = texts.find(pattern);
  return found != texts.end() ? found->second : "no date text for " + std::string(pattern);
}

bool openUrl(std::string_view url) {
  RecordingHost::instance().record("open: " + std::string(url));
  return RecordingHost::instance().opens;
}

void printLine(std::string_view line) {
  RecordingHost::instance().record("print: " + std::string(line));
}

}  // namespace platform
}  // namespace Vastel_Connect

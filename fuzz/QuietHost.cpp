#include "fuzz/QuietHost.h"

#include "platform/Platform.h"

namespace Vastel_Connect {

QuietHost& QuietHost::instance() {
  static QuietHost host;
  return host;
}

namespace platform {

std::vector<std::string> processArguments() {
  return QuietHost::instance().arguments;
}

void setUriEventHandler(AppDelegate& /*handler*/, std::uint32_t /*eventClass*/,
                        std::uint32_t /*eventId*/) {}

void removeUriEventHandler(std::uint32_t /*eventClass*/, std::uint32_t /*eventId*/) {}

void terminate() {
  ++QuietHost::instance().terminations;
}

bool isMainThread() {
  return true;
}

std::string currentDateText(std::string_view pattern) {
  return pattern.starts_with('H') ? "14:07:09" : "2018-03-05T14:07:09+0100";
}

bool openUrl(std::string_view url) {
  QuietHost::instance().pages.emplace_back(url);
  return true;
}

void printLine(std::string_view line) {
  QuietHost::instance().lines.emplace_back(line);
}

}  // namespace platform
}  // namespace Vastel_Connect

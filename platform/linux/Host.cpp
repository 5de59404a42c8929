// The process-wide state, and the functions of Platform.h that need little more.
#include "platform/linux/Host.h"

#include <unistd.h>

#include <ctime>
#include <exception>

#include "platform/Platform.h"
#include "platform/linux/Ending.h"

namespace Vastel_Connect {

Host& host() {
  static Host state;
  return state;
}

bool deliverUri(std::string_view uri, const ActivationToken& token) {
  if (!host().deliversUris) return true;
  host().token = token;
  host().hasFailed = false;
  try {
    // Here an event has its direct parameter and no other.
    const UriEvent event{[uri](std::uint32_t /*keyword*/) { return std::string(uri); }};
    host().delegate->UriEventHandlerWithEvent(event);
  } catch (const std::exception&) {
    complain("out of memory: a link may not have been opened");
    return false;
  }
  return !host().hasFailed;
}

namespace platform {
namespace {

std::string localTimeText(const char* format) {
  const std::time_t now = std::time(nullptr);
  ::tzset();  // The zone may have changed since the last line.
  std::tm local{};
  ::localtime_r(&now, &local);
  char text[64];
  const std::size_t length = std::strftime(text, sizeof text, format, &local);
  return {text, length};
}

}  // namespace

std::vector<std::string> processArguments() {
  return host().arguments;
}

void setUriEventHandler() {
  host().deliversUris = true;
}

void removeUriEventHandler() {
  host().deliversUris = false;
}

void terminate() {
  beginEnding();
}

bool isMainThread() {
  return ::gettid() == ::getpid();
}

std::string logTime() {
  return localTimeText("%H:%M:%S");
}

std::string jsonLogDate() {
  return localTimeText("%Y-%m-%dT%H:%M:%S%z");
}

}  // namespace platform
}  // namespace Vastel_Connect

// The process-wide state, and the functions of Platform.h that need little more.
#include "platform/linux/Host.h"

#include <unistd.h>

#include <ctime>

#include "platform/Platform.h"

namespace Vastel_Connect {

Host& host() {
  static Host state;
  return state;
}

void deliverUri(std::string_view uri, const ActivationToken& token) {
  if (host().uriEventHandler == nullptr) return;
  host().token = token;
  const UriEvent event{.parameter = {{.keyword = keyDirectObject, .stringValue = uri}}};
  host().uriEventHandler->UriEventHandlerWithEvent(&event);
  host().token = {};
}

void complain(std::string_view text) {
  const std::string line = "vastel-connect: " + std::string(text) + "\n";
  [[maybe_unused]] const ssize_t ignored = ::write(STDERR_FILENO, line.data(), line.size());
}

namespace platform {
namespace {

/// The strftime conversion of a run of one pattern letter; null when there is none.
const char* conversion(std::string_view run) {
  if (run == "yyyy") return "%Y";
  if (run == "MM") return "%m";
  if (run == "dd") return "%d";
  if (run == "HH") return "%H";
  if (run == "mm") return "%M";
  if (run == "ss") return "%S";
  if (run == "Z") return "%z";
  return nullptr;
}

std::string strftimeFormat(std::string_view pattern) {
  std::string format;
  bool quoted = false;
  for (std::size_t i = 0; i < pattern.size();) {
    std::size_t end = pattern.find_first_not_of(pattern[i], i);
    if (end == pattern.npos) end = pattern.size();
    const std::string_view run = pattern.substr(i, end - i);
    if (run == "'") {
      quoted = !quoted;
    } else if (const char* converted = quoted ? nullptr : conversion(run)) {
      format += converted;
    } else {
      format += run;
    }
    i = end;
  }
  return format;
}

}  // namespace

std::vector<std::string> processArguments() {
  return host().arguments;
}

// There is one kind of event: its class and ID need not be told apart.
void setUriEventHandler(AppDelegate& handler, std::uint32_t /*eventClass*/,
                        std::uint32_t /*eventId*/) {
  host().uriEventHandler = &handler;
}

void removeUriEventHandler(std::uint32_t /*eventClass*/, std::uint32_t /*eventId*/) {
  host().uriEventHandler = nullptr;
}

void terminate() {
  host().terminating = true;
  if (host().eventLoop != nullptr) sd_event_exit(host().eventLoop, 0);
}

bool isMainThread() {
  return ::gettid() == ::getpid();
}

std::string currentDateText(std::string_view pattern) {
  const std::time_t now = std::time(nullptr);
  ::tzset();  // The zone may have changed since the last line.
  std::tm local{};
  ::localtime_r(&now, &local);
  char text[64];
  const std::size_t length =
      std::strftime(text, sizeof text, strftimeFormat(pattern).c_str(), &local);
  return {text, length};
}

}  // namespace platform
}  // namespace Vastel_Connect

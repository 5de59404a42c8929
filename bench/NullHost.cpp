// A host that does nothing, so that what is measured is the program's own.
#include <benchmark/benchmark.h>

#include "platform/Platform.h"

namespace Vastel_Connect::platform {

std::vector<std::string> processArguments() {
  return {};
}

void setUriEventHandler(AppDelegate& /*handler*/, std::uint32_t /*eventClass*/,
                        std::uint32_t /*eventId*/) {}

void removeUriEventHandler(std::uint32_t /*eventClass*/, std::uint32_t /*eventId*/) {}

void terminate() {}

bool isMainThread() {
  return true;
}

std::string currentDateText(std::string_view /*pattern*/) {
  return "14:07:09";
}

bool openUrl(std::string_view url) {
  benchmark::DoNotOptimize(url);
  return true;
}

void printLine(std::string_view line) {
  benchmark::DoNotOptimize(line);
}

}  // namespace Vastel_Connect::platform

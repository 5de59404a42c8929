// Tests logTime and jsonLogDate of platform/linux/Host.cpp.
#include <gtest/gtest.h>

#include <ctime>

#include "platform/Platform.h"
#include "tests/linux/PrivateFolder.h"

namespace Vastel_Connect {
namespace {

using platform::jsonLogDate;
using platform::logTime;

/// Compares a text with what strftime makes of the same second.
void expectTimeOfNow(std::string (*function)(), const char* format) {
  std::time_t before = 0;
  std::string text;
  do {
    before = std::time(nullptr);
    text = function();
  } while (std::time(nullptr) != before);
  std::tm local{};
  ::localtime_r(&before, &local);
  char expected[64];
  const std::size_t length = std::strftime(expected, sizeof expected, format, &local);
  EXPECT_EQ(text, std::string_view(expected, length));
}

TEST(LogTime, IsTheLocalTime) {
  expectTimeOfNow(logTime, "%H:%M:%S");
}

TEST(JsonLogDate, IsTheLocalDateWithItsOffset) {
  expectTimeOfNow(jsonLogDate, "%Y-%m-%dT%H:%M:%S%z");
}

TEST(JsonLogDate, FollowsAChangeOfTheZone) {
  ScopedEnvironment environment;
  const struct {
    const char* zone;
    std::string_view offset;
  } rows[] = {
      {"UTC0", "+0000"},  {"NPT-5:45", "+0545"}, {"NST3:30", "-0330"},
      {"CET-1", "+0100"}, {"LINT-14", "+1400"},
  };
  for (const auto& [zone, offset] : rows) {
    environment.set("TZ", zone);
    EXPECT_TRUE(jsonLogDate().ends_with(offset)) << zone;
    expectTimeOfNow(jsonLogDate, "%Y-%m-%dT%H:%M:%S%z");
    expectTimeOfNow(logTime, "%H:%M:%S");
  }
}

}  // namespace
}  // namespace Vastel_Connect

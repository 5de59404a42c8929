// Tests currentDateText of platform/linux/Host.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>

#include "platform/Platform.h"
#include "tests/linux/PrivateFolder.h"

namespace Vastel_Connect {
namespace {

using platform::currentDateText;

constexpr std::string_view kLinePattern = "HH:mm:ss";
constexpr std::string_view kFullPattern = "yyyy-MM-dd'T'HH:mm:ssZ";

/// A date text and what strftime makes of the same second.
void expectSameSecond(std::string_view pattern, const char* format) {
  std::time_t before = 0;
  std::string text;
  do {
    before = std::time(nullptr);
    text = currentDateText(pattern);
  } while (std::time(nullptr) != before);
  std::tm local{};
  ::localtime_r(&before, &local);
  char expected[64];
  const std::size_t length = std::strftime(expected, sizeof expected, format, &local);
  EXPECT_EQ(text, std::string_view(expected, length)) << pattern;
}

TEST(CurrentDateText, HasTheFormOfThePatternsInUse) {
  EXPECT_THAT(currentDateText(kLinePattern), testing::MatchesRegex("[0-9]{2}(:[0-9]{2}){2}"));
  EXPECT_THAT(currentDateText(kFullPattern),
              testing::MatchesRegex("[0-9]{4}(-[0-9]{2}){2}T[0-9]{2}(:[0-9]{2}){2}[+-][0-9]{4}"));
}

TEST(CurrentDateText, IsTheLocalTime) {
  expectSameSecond(kLinePattern, "%H:%M:%S");
  expectSameSecond(kFullPattern, "%Y-%m-%dT%H:%M:%S%z");
}

TEST(CurrentDateText, FollowsAChangeOfTheZone) {
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
    EXPECT_EQ(currentDateText("Z"), offset) << zone;
    expectSameSecond(kFullPattern, "%Y-%m-%dT%H:%M:%S%z");
  }
}

TEST(CurrentDateText, KeepsQuotedTextAndEverythingElse) {
  EXPECT_EQ(currentDateText("'T'"), "T");
  EXPECT_EQ(currentDateText("'HH mm yyyy Z'"), "HH mm yyyy Z");
  EXPECT_EQ(currentDateText("-/:."), "-/:.");
  EXPECT_EQ(currentDateText(""), "");
}

}  // namespace
}  // namespace Vastel_Connect

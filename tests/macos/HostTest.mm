// Tests the functions of Platform.h that need no application: platform/macos/Host.mm.
#import <Foundation/Foundation.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <thread>

#include "platform/Platform.h"
#import "platform/macos/Text.h"
#include "tests/platform/Data.h"

namespace Vastel_Connect::platform {
namespace {

TEST(MacHost, GivesTheProgramsOwnPathFirst) {
  const auto arguments = processArguments();
  ASSERT_FALSE(arguments.empty());
  EXPECT_TRUE(arguments.front().ends_with("test_macos")) << arguments.front();
}

TEST(MacHost, KnowsTheMainThread) {
  EXPECT_TRUE(isMainThread());
  bool main = true;
  std::thread([&] { main = isMainThread(); }).join();
  EXPECT_FALSE(main);
}

TEST(MacHost, WritesTimesOnAnyThread) {
  std::thread threads[4];
  for (auto& thread : threads) {
    thread = std::thread([] {
      for (int i = 0; i < 20; ++i) {
        EXPECT_THAT(logTime(), testing::MatchesRegex("..:..:.."));
        EXPECT_THAT(jsonLogDate(), testing::MatchesRegex("....-..-..T..:..:......."));
      }
    });
  }
  for (auto& thread : threads) thread.join();
}

/// Foundation passes on what the check takes exactly as it was. What is odd in an authority is left
/// out: each release takes it differently.
TEST(MacHost, KeepsTheTextOfEachOrdinaryUrl) {
  const std::regex ordinary(R"([a-z][a-z0-9+.\-]*://[A-Za-z0-9.\-]+(:[0-9]+)?([/?#][^\[\]]*)?)");
  int compared = 0;
  for (const auto& row : readTable("nsurl.tsv")) {
    const std::string text = jsonString(row[0]);
    if (row[1] != "accept" || !std::regex_match(text, ordinary)) continue;
#ifdef GNUSTEP
    if (text.ends_with(";")) continue;  // Which it drops.
#endif
    @autoreleasepool {
      NSURL* url = [[NSURL alloc] initWithString:foundationText(text)];
      EXPECT_EQ(utf8Text(url.absoluteString), text);
    }
    ++compared;
  }
  EXPECT_GT(compared, 100);
}

TEST(MacHost, OpensNothingThatFormsNoUrl) {
  EXPECT_FALSE(openUrl("x:\xFF"));
}

}  // namespace
}  // namespace Vastel_Connect::platform

// Tests the functions of Platform.h that need no application: platform/macos/Host.mm.
#import <Foundation/Foundation.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "platform/Platform.h"

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
  const auto expectTimes = [] {
    for (int i = 0; i < 20; ++i) {
      EXPECT_THAT(logTime(), testing::MatchesRegex("[0-9]+:[0-9]+:[0-9]+"));
      EXPECT_THAT(jsonLogDate(), testing::MatchesRegex("[0-9]+-[0-9]+-[0-9]+T[0-9]+:[0-9]+:[0-9]+"
                                                       ".[0-9]+"));
      EXPECT_EQ(logTime().size(), 8U);
      EXPECT_EQ(jsonLogDate().size(), 24U);
    }
  };
  expectTimes();
  std::thread threads[4];
  for (auto& thread : threads) thread = std::thread(expectTimes);
  for (auto& thread : threads) thread.join();
}

TEST(MacHost, OpensNothingThatFormsNoUrl) {
  EXPECT_FALSE(openUrl("x:\xFF"));
}

}  // namespace
}  // namespace Vastel_Connect::platform

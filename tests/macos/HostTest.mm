// Tests the functions of Platform.h that need no application: platform/macos/Host.mm.
#import <Foundation/Foundation.h>
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

TEST(MacHost, WritesDatesOnAnyThread) {
  for (const char* pattern : {"HH:mm:ss", "yyyy-MM-dd'T'HH:mm:ssZ"}) {
    const auto expected = std::string_view(pattern) == "HH:mm:ss" ? 8U : 24U;
    EXPECT_EQ(currentDateText(pattern).size(), expected) << currentDateText(pattern);
    std::thread threads[4];
    for (auto& thread : threads) {
      thread = std::thread([&] {
        for (int i = 0; i < 20; ++i) EXPECT_EQ(currentDateText(pattern).size(), expected);
      });
    }
    for (auto& thread : threads) thread.join();
  }
}

TEST(MacHost, OpensNothingThatHasNoScheme) {
  for (const char* text : {"", "foo", "/etc/passwd", "--help", "//host", ":", "://h"}) {
    EXPECT_FALSE(openUrl(text)) << text;
  }
}

}  // namespace
}  // namespace Vastel_Connect::platform

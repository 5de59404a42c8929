// Tests AppDelegate::logMessage.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "tests/platform/RecordingHost.h"

namespace Vastel_Connect {
namespace {

using testing::ElementsAre;

class LogMessage : public WithRecordingHost<testing::Test> {
 protected:
  /// The lines of a message under the switches that are on.
  std::vector<std::string> lines(std::string_view message, std::string_view value = {}) {
    host.reset();
    delegate.logMessage(message, value);
    return host.eventsOf("print: ");
  }

  AppDelegate delegate;
};

const std::string kJsonLine =
    R"({"datetime":"2018-03-05T14:07:09+0100","event":"Log","message":"hello"})";

TEST_F(LogMessage, WritesAPlainLineThenAJsonLineAsTheSwitchesSay) {
  EXPECT_THAT(lines("hello"), testing::IsEmpty());
  delegate.FlagLog = true;
  EXPECT_THAT(lines("hello"), ElementsAre("Log 14:07:09> hello"));
  delegate.FlagJsonLog = true;
  EXPECT_THAT(lines("hello"), ElementsAre("Log 14:07:09> hello", kJsonLine));
  EXPECT_THAT(lines("hel", "lo"), ElementsAre("Log 14:07:09> hello", kJsonLine));
  delegate.FlagLog = false;
  EXPECT_THAT(lines("hello"), ElementsAre(kJsonLine));
}

TEST_F(LogMessage, LeavesTheMessageOfAPlainLineUnchanged) {
  delegate.FlagLog = true;
  EXPECT_THAT(lines(""), ElementsAre("Log 14:07:09> "));
  EXPECT_THAT(lines("a\n\"b\"\\ \xC3\xA9", " x "),
              ElementsAre("Log 14:07:09> a\n\"b\"\\ \xC3\xA9 x "));
}

TEST_F(LogMessage, MarksThePlainLinesOfOtherThreadsWhichMayLogAtOnce) {
  delegate.FlagLog = delegate.FlagJsonLog = true;
  std::thread threads[8];
  for (auto& thread : threads) {
    thread = std::thread([this] {
      for (int i = 0; i < 100; ++i) delegate.logMessage("hello");
    });
  }
  for (auto& thread : threads) thread.join();
  const auto count = [this](const std::string& line) {
    return host.eventsOf("print: " + line).size();
  };
  EXPECT_EQ(count(">>>SUB THREAD<<< Log 14:07:09> hello"), 800U);
  EXPECT_EQ(count(kJsonLine), 800U);
  EXPECT_EQ(count(""), 1600U);
}

}  // namespace
}  // namespace Vastel_Connect

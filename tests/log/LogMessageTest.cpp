// Tests AppDelegate::logMessage, and log/JsonLogLine.h.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/json.hpp>
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

TEST_F(LogMessage, LeavesAMessageUnchangedInAPlainLineAndInAJsonLineThatStaysOne) {
  delegate.FlagLog = delegate.FlagJsonLog = true;
  for (const std::string& message : {std::string("\"\\ line\nfeeds\r\n\0\x1B\x07\x7F ", 18),
                                     std::string(), std::string("caf\xC3\xA9 \xF0\x9F\x98\x80")}) {
    const auto both = lines(message);
    EXPECT_EQ(both.at(0), "Log 14:07:09> " + message);
    for (const char c : both.at(1)) EXPECT_GE(static_cast<unsigned char>(c), ' ') << both[1];
    EXPECT_EQ(boost::json::parse(both[1]).at("message").as_string(), message);
  }
}

TEST_F(LogMessage, SaysSoOfAMessageThatJsonCannotHold) {
  delegate.FlagJsonLog = true;
  for (const std::string_view message : {"\xFF", "a\xC3", "\xED\xA0\x80"}) {
    EXPECT_THAT(lines(message),
                ElementsAre(R"({"datetime":"2018-03-05T14:07:09+0100","event":"Log",)"
                            R"("message":"error while serializing [log]"})"));
  }
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

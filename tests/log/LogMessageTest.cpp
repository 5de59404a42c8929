// Tests AppDelegate::logMessage.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "tests/platform/RecordingHost.h"

namespace Vastel_Connect {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LogMessage : public WithRecordingHost<testing::Test> {
 protected:
  AppDelegate delegate;
};

TEST_F(LogMessage, WritesNothingWithoutASwitch) {
  delegate.logMessage("hello");
  EXPECT_THAT(host.events(), IsEmpty());
}

TEST_F(LogMessage, WritesThePlainLine) {
  delegate.FlagLog = true;
  delegate.logMessage("hello");
  EXPECT_THAT(host.events(), ElementsAre("print: Log 14:07:09> hello"));
}

TEST_F(LogMessage, WritesTheJsonLineAlone) {
  delegate.FlagJsonLog = true;
  delegate.logMessage("hello");
  EXPECT_THAT(
      host.events(),
      ElementsAre(
          R"(print: {"datetime":"2018-03-05T14:07:09+0100","event":"Log","message":"hello"})"));
}

TEST_F(LogMessage, WritesPlainLineBeforeJsonLine) {
  delegate.FlagLog = true;
  delegate.FlagJsonLog = true;
  delegate.logMessage("a");
  delegate.logMessage("b");
  EXPECT_THAT(
      host.events(),
      ElementsAre("print: Log 14:07:09> a",
                  R"(print: {"datetime":"2018-03-05T14:07:09+0100","event":"Log","message":"a"})",
                  "print: Log 14:07:09> b",
                  R"(print: {"datetime":"2018-03-05T14:07:09+0100","event":"Log","message":"b"})"));
}

TEST_F(LogMessage, MarksThePlainLineOfAnotherThread) {
  delegate.FlagLog = true;
  delegate.FlagJsonLog = true;
  std::thread([this] { delegate.logMessage("hello"); }).join();
  EXPECT_THAT(
      host.events(),
      ElementsAre(
          "print: >>>SUB THREAD<<< Log 14:07:09> hello",
          R"(print: {"datetime":"2018-03-05T14:07:09+0100","event":"Log","message":"hello"})"));
}

TEST_F(LogMessage, MayBeCalledFromManyThreadsAtOnce) {
  delegate.FlagLog = true;
  std::thread threads[8];
  for (auto& thread : threads) {
    thread = std::thread([this] {
      for (int i = 0; i < 100; ++i) delegate.logMessage("x");
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_THAT(host.events(),
              testing::AllOf(testing::SizeIs(800),
                             testing::Each("print: >>>SUB THREAD<<< Log 14:07:09> x")));
}

TEST_F(LogMessage, EndsThePlainLineOfAnEmptyMessageWithABlank) {
  delegate.FlagLog = true;
  delegate.logMessage("");
  EXPECT_THAT(host.events(), ElementsAre("print: Log 14:07:09> "));
}

TEST_F(LogMessage, LeavesTheMessageOfAPlainLineUnchanged) {
  delegate.FlagLog = true;
  delegate.logMessage("a\n\"b\"\\ \xC3\xA9");
  EXPECT_THAT(host.events(), ElementsAre("print: Log 14:07:09> a\n\"b\"\\ \xC3\xA9"));
}

TEST_F(LogMessage, PutsAValueRightBehindTheMessage) {
  delegate.FlagLog = true;
  delegate.logMessage("webpage: ", " x ");
  EXPECT_THAT(host.events(), ElementsAre("print: Log 14:07:09> webpage:  x "));
}

}  // namespace
}  // namespace Vastel_Connect

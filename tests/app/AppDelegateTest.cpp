// Tests the lifecycle of app/AppDelegate.h and its URI event callback.
#include "app/AppDelegate.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <type_traits>

#include "tests/platform/RecordingHost.h"

namespace Vastel_Connect {
namespace {

using testing::Contains;
using testing::ElementsAre;

/// An event with one parameter.
UriEvent withText(const std::string& text) {
  return {[=](std::uint32_t keyword) {
    return keyword == keyDirectObject ? std::optional(text) : std::nullopt;
  }};
}

class Delegate : public WithRecordingHost<testing::Test> {
 protected:
  AppDelegate delegate;
};

static_assert(!std::is_polymorphic_v<AppDelegate>);
static_assert(std::is_same_v<decltype(AppDelegate::window), std::weak_ptr<Window>>);
static_assert(kInternetEventClass == 0x4755524C && kAEGetURL == 0x4755524C);
static_assert(keyDirectObject == 0x2D2D2D2D);

TEST_F(Delegate, RegistersTheHandlerFirstAndLogsNothingOfTheUriThatLaunchedIt) {
  host.arguments = {"vastel-connect", "-log", "-jsonlog"};
  delegate.applicationWillFinishLaunching();
  delegate.UriEventHandlerWithEvent(withText("screenpop"));
  EXPECT_THAT(host.events(), ElementsAre("set handler"));
}

TEST_F(Delegate, RemovesTheHandlerAtItsEnd) {
  host.arguments = {"vastel-connect", "-help"};
  delegate.applicationDidFinishLaunching();
  EXPECT_EQ(host.events().back(), "terminate");
  delegate.applicationWillTerminate();
  EXPECT_EQ(host.events().back(), "remove handler");
}

class UriEventCallback : public Delegate {
 protected:
  UriEventCallback() { delegate.FlagLog = true; }
};

TEST_F(UriEventCallback, HandsTheTextToProcessUri) {
  for (const std::string text : {"a text ", ""}) {
    host.reset();
    delegate.UriEventHandlerWithEvent(withText(text));
    EXPECT_EQ(host.events().front(), "print: Log 14:07:09> new uri event");
    EXPECT_THAT(host.events(), Contains("print: Log 14:07:09> process uri: " + text));
  }
}

TEST_F(UriEventCallback, LogsTheEventBeforeItLooksIntoIt) {
  delegate.UriEventHandlerWithEvent({[this](std::uint32_t /*keyword*/) {
    host.record("asked for the text");
    return std::nullopt;
  }});
  EXPECT_THAT(host.events(), ElementsAre("print: Log 14:07:09> new uri event", "asked for the text",
                                         "print: Log 14:07:09> no event data"));
}

}  // namespace
}  // namespace Vastel_Connect

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
UriEvent withText(std::uint32_t keyword, std::optional<std::string> text) {
  return {[=](std::uint32_t asked) { return asked == keyword ? text : std::nullopt; }};
}

class Delegate : public WithRecordingHost<testing::Test> {
 protected:
  AppDelegate delegate;
};

static_assert(!std::is_polymorphic_v<AppDelegate>);

TEST_F(Delegate, StartsWithoutWindowAndFlags) {
  EXPECT_TRUE(delegate.window.expired());
  EXPECT_FALSE(delegate.FlagChangeLog || delegate.FlagHelp || delegate.FlagLog ||
               delegate.FlagJsonLog || delegate.FlagShowUri);
  EXPECT_THAT(host.events(), testing::IsEmpty());
}

TEST_F(Delegate, DoesNotOwnItsWindow) {
  auto window = std::make_shared<int>();
  delegate.window = std::reinterpret_pointer_cast<Window>(window);
  EXPECT_FALSE(delegate.window.expired());
  window.reset();
  EXPECT_TRUE(delegate.window.expired());
}

TEST_F(Delegate, RegistersTheHandlerFirstAndLogsNothingOfTheUriThatLaunchedIt) {
  host.arguments = {"vastel-connect", "-log", "-jsonlog"};
  delegate.applicationWillFinishLaunching();
  delegate.UriEventHandlerWithEvent(withText(keyDirectObject, "screenpop"));
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
    delegate.UriEventHandlerWithEvent(withText(keyDirectObject, text));
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

TEST_F(UriEventCallback, LogsNoEventDataWithoutAUsableText) {
  const UriEvent events[] = {withText(0x2D2D2D2E, "screenpop:e30="),
                             withText(keyDirectObject, std::nullopt)};
  for (const UriEvent& event : events) {
    host.reset();
    delegate.UriEventHandlerWithEvent(event);
    EXPECT_THAT(host.events(), ElementsAre("print: Log 14:07:09> new uri event",
                                           "print: Log 14:07:09> no event data"));
  }
}

TEST_F(UriEventCallback, KnowsTheCodesOfTheEvent) {
  EXPECT_EQ(kInternetEventClass, 0x4755524CU);
  EXPECT_EQ(kAEGetURL, 0x4755524CU);
  EXPECT_EQ(keyDirectObject, 0x2D2D2D2DU);
}

}  // namespace
}  // namespace Vastel_Connect

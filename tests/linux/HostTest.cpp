// Tests what of the host on Linux no link shows.
#include "platform/linux/Host.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <thread>

#include "platform/Platform.h"
#include "platform/linux/ApplicationMain.h"
#include "platform/linux/Ending.h"
#include "platform/linux/LaunchArguments.h"
#include "tests/platform/ScopedEnvironment.h"

namespace Vastel_Connect {
namespace {

TEST(IsMainThread, IsFalseOnAnyOther) {
  EXPECT_TRUE(platform::isMainThread());
  bool elsewhere = true;
  std::thread([&elsewhere] { elsewhere = platform::isMainThread(); }).join();
  EXPECT_FALSE(elsewhere);
}

TEST(DeliverUri, DoesNothingBeforeTheApplicationsLife) {
  deliverUri("screenpop:", {.activationToken = "token", .startupId = {}});
  EXPECT_FALSE(host().token.activationToken);
}

TEST(ReadLaunchArguments, TakesTheProgramsOwnNameForNoLink) {
  char name[] = "screenpop:";
  char* arguments[] = {name, nullptr};
  const LaunchArguments found = readLaunchArguments(1, arguments);
  EXPECT_EQ(found.all, std::vector<std::string>{"screenpop:"});
  EXPECT_TRUE(found.links.empty() && !found.startedWithLink);
}

TEST(JsonLogDate, FollowsAChangeOfTheZone) {
  for (const auto& [zone, offset] : {std::pair("NPT-5:45", "+0545"), {"NST3:30", "-0330"}}) {
    const ScopedEnvironment environment("TZ", zone);
    EXPECT_TRUE(platform::jsonLogDate().ends_with(offset)) << zone;
  }
}

TEST(PrintLine, LeavesNoAlarmBehindALineThatWasTaken) {
  EXPECT_EXIT(
      {
        platform::terminate();
        platform::printLine("taken");
        std::_Exit(isEnding() && ::alarm(0) == 0 ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

/// Runs the application to its end, and ends with status 0 when it left nothing behind.
[[noreturn]] void runWith(std::string argument) {
  std::string name = "vastel-connect";
  char* arguments[] = {name.data(), argument.data(), nullptr};
  const int status = applicationMain(2, arguments);
  std::_Exit(status == 0 && !host().deliversUris && host().delegate == nullptr ? 0 : 1);
}

TEST(ApplicationMain, TerminatesTheDelegate) {
  EXPECT_EXIT(runWith("-help"), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace Vastel_Connect

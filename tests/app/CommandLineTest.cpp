// Tests parseCommandLine and handleCommandLine of app/AppDelegate.h, and app/SwitchText.h.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/SwitchText.h"
#include "tests/platform/Data.h"
#include "tests/platform/RecordingHost.h"

namespace Vastel_Connect {
namespace {

class CommandLine : public WithRecordingHost<testing::Test> {
 protected:
  /// The names of the flags that the arguments set, in the order of their declaration.
  std::string flags(std::vector<std::string> arguments) {
    host.arguments = std::move(arguments);
    AppDelegate delegate;
    delegate.parseCommandLine();
    std::string names;
    if (delegate.FlagChangeLog) names += "FlagChangeLog ";
    if (delegate.FlagHelp) names += "FlagHelp ";
    if (delegate.FlagLog) names += "FlagLog ";
    if (delegate.FlagJsonLog) names += "FlagJsonLog ";
    if (delegate.FlagShowUri) names += "FlagShowUri ";
    if (!names.empty()) names.pop_back();
    return names;
  }

  /// What a start with these arguments prints, and "<end>" where it asks to end.
  std::string start(std::vector<std::string> arguments) {
    host.reset();
    host.arguments = std::move(arguments);
    AppDelegate delegate;
    delegate.applicationDidFinishLaunching();
    std::string output;
    for (const std::string& event : host.events()) {
      output += event == "terminate" ? "<end>" : event.substr(std::string("print: ").size()) + "\n";
    }
    return output;
  }

  const std::string banner = readData("banner.txt");
  const std::string usage = readData("usage.txt");
  const std::string changeLog = readData("changelog.txt");
  const std::string showUri = readData("showuri.txt");
};

TEST_F(CommandLine, AgreesWithThePlatformOnEverySpelling) {
  for (const auto& row : readTable("switches.tsv")) {
    const std::string argument = jsonString(row[0]);
    EXPECT_EQ(flags({"vastel-connect", argument}), row[1] == "none" ? "" : row[1]) << row[0];
  }
}

TEST_F(CommandLine, FoldsNoPartOfALongS) {
  EXPECT_FALSE(equalsSwitch("\xC5", "s"));
  EXPECT_FALSE(equalsSwitch("\xC5\xBF", ""));
}

TEST_F(CommandLine, TestsTheProgramsOwnPathToo) {
  EXPECT_EQ(flags({"-log"}), "FlagLog");
  EXPECT_EQ(flags({"/h", "-jsonlog"}), "FlagHelp FlagJsonLog");
}

TEST_F(CommandLine, TakesASwitchTwiceAsOnce) {
  EXPECT_EQ(start({"x", "-help", "-h"}), banner + usage + "<end>");
}

TEST_F(CommandLine, IsReadBeforeAnythingIsPrinted) {
  EXPECT_EQ(start({"/usr/bin/vastel-connect"}), banner);
  EXPECT_EQ(host.eventsBeforeArguments, 0U);
}

TEST_F(CommandLine, PrintsTheTextsInTheirOwnOrder) {
  EXPECT_EQ(start({"x", "-changelog", "-help"}), banner + usage + changeLog + "<end>");
  EXPECT_EQ(start({"x", "-changelog", "-showuri", "-help"}),
            banner + usage + changeLog + showUri + "<end>");
}

TEST_F(CommandLine, WritesNoLogLineDuringTheStart) {
  EXPECT_EQ(start({"x", "-showuri", "-jsonlog"}), banner + showUri + "<end>");
  EXPECT_EQ(start({"x", "-log", "-jsonlog", "--help", "screenpop:e30="}), banner);
  EXPECT_EQ(start({}), banner);
}

}  // namespace
}  // namespace Vastel_Connect

// Tests parseCommandLine and handleCommandLine of app/AppDelegate.h, and app/SwitchText.h.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/ConsoleTexts.h"
#include "app/SwitchText.h"
#include "tests/platform/Data.h"
#include "tests/platform/RecordingHost.h"
#include "text/Ascii.h"

namespace Vastel_Connect {
namespace {

class CommandLine : public WithRecordingHost<testing::Test> {
 protected:
  /// The switches whose flags the arguments set.
  std::string flags(std::vector<std::string> arguments) {
    host.arguments = std::move(arguments);
    AppDelegate delegate;
    delegate.parseCommandLine();
    std::string names;
    for (const Switch& each : switches()) {
      if (delegate.*each.flag) names.append(each.names.front()) += ' ';
    }
    if (!names.empty()) names.pop_back();
    return names;
  }

  /// What a start prints once it has read these arguments, and "<end>" where it asks to end.
  std::string start(std::vector<std::string> arguments) {
    host.reset();
    host.arguments = std::move(arguments);
    AppDelegate delegate;
    delegate.applicationDidFinishLaunching();
    EXPECT_EQ(host.events().front(), "read arguments");
    std::string output;
    for (const std::string& line : host.eventsOf("print: ")) output += line + "\n";
    return output + (host.events().back() == "terminate" ? "<end>" : "");
  }

  const std::string banner = readData("banner.txt");
};

TEST_F(CommandLine, AgreesWithThePlatformOnEverySpelling) {
  for (const auto& row : readTable("switches.tsv")) {
    const std::string argument = jsonString(row[0]);
    EXPECT_EQ(flags({"vastel-connect", argument}),
              row[1] == "none" ? "" : asciiLowerCase(row[1].substr(4)))
        << row[0];
  }
}

TEST_F(CommandLine, FoldsNoPartOfALongS) {
  EXPECT_FALSE(equalsSwitch("\xC5", "s"));
  EXPECT_FALSE(equalsSwitch("\xC5\xBF", ""));
}

TEST_F(CommandLine, TestsTheProgramsOwnPathToo) {
  EXPECT_EQ(flags({"-log"}), "log");
  EXPECT_EQ(flags({"/h", "-jsonlog"}), "jsonlog help");
}

/// Each switch with a text has a file of its name, and the texts come in the order of the table.
TEST_F(CommandLine, PrintsTheTextOfEachSwitchOnceAndEnds) {
  std::vector<std::string> all;
  std::string texts = banner;
  for (const Switch& each : switches()) {
    const std::string name(each.names.front());
    const std::string text = each.print != nullptr ? readData(name + ".txt") + "<end>" : "";
    for (const std::string_view spelling : each.names) {
      const std::string dash = "-" + std::string(spelling);
      EXPECT_EQ(start({"x", dash, "/" + std::string(spelling)}), banner + text);
      all.insert(all.begin(), dash);
    }
    if (each.print != nullptr) texts += readData(name + ".txt");
  }
  EXPECT_EQ(start(all), texts + "<end>");
}

TEST_F(CommandLine, WritesNoLogLineDuringTheStart) {
  EXPECT_EQ(start({"x", "-log", "-jsonlog", "--help", "screenpop:e30="}), banner);
  EXPECT_EQ(start({}), banner);
}

}  // namespace
}  // namespace Vastel_Connect

// The delegate's life from launch to termination, its command line, and the URI event callback.
#include "app/AppDelegate.h"

#include <string>
#include <vector>

#include "app/ConsoleTexts.h"
#include "app/SwitchText.h"
#include "platform/Platform.h"

namespace Vastel_Connect {
namespace {

using Flag = bool AppDelegate::*;

struct Switch {
  Flag flag;
  std::vector<std::string_view> spellings;
};

/// The usage text names the dash spellings only; the others are accepted on purpose.
const std::vector<Switch>& switches() {
  static const std::vector<Switch> table = {
      {&AppDelegate::FlagChangeLog, {"/changelog", "-changelog"}},
      {&AppDelegate::FlagHelp, {"/help", "-help", "/h", "-h"}},
      {&AppDelegate::FlagLog, {"/log", "-log"}},
      {&AppDelegate::FlagJsonLog, {"/jsonlog", "-jsonlog"}},
      {&AppDelegate::FlagShowUri, {"/showuri", "-showuri"}},
  };
  return table;
}

}  // namespace

void AppDelegate::applicationWillFinishLaunching() {
  // Before the command line is read, on purpose: the URI that launched the application comes next,
  // and writes no log line whatever the switches say.
  platform::setUriEventHandler();
}

void AppDelegate::applicationDidFinishLaunching() {
  handleCommandLine();
}

void AppDelegate::applicationWillTerminate() {
  platform::removeUriEventHandler();
}

void AppDelegate::UriEventHandlerWithEvent(const UriEvent& event) {
  logMessage("new uri event");
  const auto uri = event.textOfParameter(keyDirectObject);
  if (!uri) return logMessage("no event data");
  processUri(*uri);
}

void AppDelegate::parseCommandLine() {
  for (const std::string& argument : platform::processArguments()) {
    for (const auto& [flag, spellings] : switches()) {
      for (const std::string_view spelling : spellings) {
        if (equalsSwitch(argument, spelling)) this->*flag = true;
      }
    }
  }
}

void AppDelegate::handleCommandLine() {
  parseCommandLine();
  printBanner();
  if (FlagHelp) printUsage();
  if (FlagChangeLog) printChangeLog();
  if (FlagShowUri) platform::printLine(UriApiText);
  if (endsAfterText()) platform::terminate();
}

}  // namespace Vastel_Connect

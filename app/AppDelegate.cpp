// The delegate's life from launch to termination, its command line, and the URI event callback.
#include "app/AppDelegate.h"

#include <algorithm>
#include <string>

#include "app/ConsoleTexts.h"
#include "app/SwitchText.h"
#include "platform/Platform.h"

namespace Vastel_Connect {

void AppDelegate::applicationWillFinishLaunching() {
  // Before the command line is read, on purpose: on macOS, the URI that launched the application
  // comes next. So it writes no log line whatever the switches say, and the same on every host.
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

bool AppDelegate::endsAfterText() const {
  return std::any_of(switches().begin(), switches().end(), [this](const Switch& each) {
    return this->*each.flag && each.print != nullptr;
  });
}

void AppDelegate::parseCommandLine() {
  for (const std::string& argument : platform::processArguments()) {
    // Either sign, on purpose, though the usage text names the dash alone: both are in use.
    if (!argument.starts_with('-') && !argument.starts_with('/')) continue;
    for (const Switch& each : switches()) {
      for (const std::string_view name : each.names) {
        if (equalsSwitch(std::string_view(argument).substr(1), name)) this->*each.flag = true;
      }
    }
  }
}

void AppDelegate::handleCommandLine() {
  parseCommandLine();
  printBanner();
  for (const Switch& each : switches()) {
    if (this->*each.flag && each.print != nullptr) each.print();
  }
  if (endsAfterText()) platform::terminate();
}

}  // namespace Vastel_Connect

// The delegate's logging operation.
#include <string>

#include "app/AppDelegate.h"
#include "log/JsonLogLine.h"
#include "platform/Platform.h"

namespace Vastel_Connect {
namespace {

std::string plainLogLine(std::string_view message) {
  std::string line = platform::isMainThread() ? "" : ">>>SUB THREAD<<< ";
  line += "Log ";
  line += platform::logTime();
  line += "> ";
  line += message;
  return line;
}

/// A function of its own, so that a call that logs nothing needs neither registers nor a stack.
[[gnu::noinline]] void printLogLines(const AppDelegate& delegate, std::string_view message,
                                     std::string_view value) {
  const std::string text = std::string(message).append(value);
  if (delegate.FlagLog) platform::printLine(plainLogLine(text));
  if (delegate.FlagJsonLog) platform::printLine(makeJsonLogLine(text));
}

}  // namespace

void AppDelegate::logMessage(std::string_view message, std::string_view value) const {
  if (FlagLog || FlagJsonLog) printLogLines(*this, message, value);
}

}  // namespace Vastel_Connect

// The delegate's logging operation.
#include <string>

#include "app/AppDelegate.h"
#include "log/JsonLogLine.h"
#include "platform/Platform.h"

namespace Vastel_Connect {
namespace {

std::string textLogLine(std::string_view message) {
  // Nothing logs on another thread today. The mark is part of the lines' form, which readers know.
  std::string line = platform::isMainThread() ? "" : ">>>SUB THREAD<<< ";
  line += "Log ";
  line += platform::logTime();
  line += "> ";
  line += message;
  return line;
}

}  // namespace

void AppDelegate::logMessage(std::string_view message, std::string_view value) const {
  if (!FlagLog && !FlagJsonLog) return;
  const std::string text = std::string(message).append(value);
  if (FlagLog) platform::printLine(textLogLine(text));
  if (FlagJsonLog) platform::printLine(makeJsonLogLine(text));
}

}  // namespace Vastel_Connect

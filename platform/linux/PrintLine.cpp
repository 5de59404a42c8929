// Standard output and standard error. Who reads them may be stuck, which must not keep the program
// from ending. How a descriptor blocks is shared with all who have it, and so is not for us to
// change: a signal to end reaches a write that waits for its reader.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <string>

#include "platform/Platform.h"
#include "platform/linux/Ending.h"
#include "platform/linux/Host.h"
#include "platform/posix/WriteText.h"

namespace Vastel_Connect {
namespace {

/// Some hold what another program had to say.
constexpr std::size_t kLongestComplaint = 480;

}  // namespace

void complain(std::string_view text) {
  // No memory is asked for: there may be none.
  std::array<char, kLongestComplaint + 32> line{};
  const auto length = static_cast<int>(std::min(text.size(), kLongestComplaint));
  const int written =
      std::snprintf(line.data(), line.size(), "vastel-connect: %.*s\n", length, text.data());
  const LimitedWait wait(STDERR_FILENO);
  writeText(STDERR_FILENO, {line.data(), static_cast<std::size_t>(written)});
}

void platform::printLine(std::string_view line) {
  /// The line before was not written to its end.
  static std::atomic<bool> isBrokenOff = false;
  const std::string text = std::string(isBrokenOff ? "\n" : "").append(line).append("\n");
  const LimitedWait wait(STDOUT_FILENO);
  const std::size_t written = writeText(STDOUT_FILENO, text);
  if (written > 0) isBrokenOff = written < text.size();
}

}  // namespace Vastel_Connect

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Vastel_Connect {

/// The argument of the service files. The variables by which the bus tells a program that it was
/// started do not serve: terminals started by the bus hand them down to their shells.
inline constexpr std::string_view kServiceArgument = "--dbus-service";

/// What the process was started with, sorted out.
struct LaunchArguments {
  /// Every argument that is valid UTF-8, the program's own path first.
  std::vector<std::string> all;
  /// Those of them, the first excepted, that begin with a scheme and ":".
  std::vector<std::string> links;
  /// Whether the process was started to follow a link, be it one that had to be refused.
  bool startedWithLink = false;
  /// Whether the bus started the process, to send it a link at once.
  bool startedByBus = false;
};

/// Ignores each argument that is not valid UTF-8: a link with a line on standard error.
[[nodiscard]] LaunchArguments readLaunchArguments(int argc, char** argv);

}  // namespace Vastel_Connect

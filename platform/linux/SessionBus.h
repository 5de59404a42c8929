#pragma once

#include <optional>

namespace Vastel_Connect {

/// How a process asks for the application's name.
enum class NameRequest {
  /// Takes the name from an older instance, which has it again when this one ends.
  TakeOver,
  /// Waits in line behind an instance that has the name already.
  Queue,
  /// Gives up when somebody has it.
  IfFree,
};

/// Connects to the session bus, exports org.freedesktop.Application there, and keeps the connection
/// in the host's state. False when there is no session bus.
[[nodiscard]] bool connectSessionBus();

/// Asks for the name. True: it is ours now. False: another process keeps it; with TakeOver and
/// Queue we are in line for it. Absent: the bus does not answer.
[[nodiscard]] std::optional<bool> requestBusName(NameRequest request);

/// Delivers the links for which the bus has just started this process, once it has the name. Closes
/// a connection that fails.
void receiveLaunchLinks();

/// Gives the name back, delivers the links that had already arrived, and closes the connection, if
/// there is one.
void leaveBus();

}  // namespace Vastel_Connect

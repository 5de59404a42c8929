#pragma once

namespace Vastel_Connect {

/// How a process asks for the application's name.
enum class NameRequest {
  /// Takes the name from an older instance, which has it again when this one ends.
  TakeOver,
  /// Waits in line behind an instance that has the name already.
  Queue,
};

/// How the bus answers.
enum class NameAnswer {
  Ours,
  /// Another process keeps it, and we are in line for it; or the program is to end.
  Waiting,
  /// There is no bus, or it refuses the name to this process.
  None,
};

/// Begins to connect to the session bus, and keeps the connection in the host's state. What is sent
/// before the bus has answered leaves behind the greeting. False when there is no session bus.
[[nodiscard]] bool connectSessionBus();

/// Ends the connection, if there is one, with whatever waits in it.
void closeSessionBus();

/// Exports org.freedesktop.Application and asks for the name; calls that arrive meanwhile are
/// carried out. Where there is none, says why on standard error and ends the connection.
[[nodiscard]] NameAnswer requestBusName(NameRequest request);

/// Delivers the links for which the bus has just started this process, once it has the name.
void receiveLaunchLinks();

/// Gives the name back, delivers the links that had arrived by then, and closes the connection, if
/// there is one.
void leaveBus();

}  // namespace Vastel_Connect

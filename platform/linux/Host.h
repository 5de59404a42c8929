#pragma once

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <array>
#include <atomic>
#include <csignal>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "app/AppDelegate.h"
#include "platform/linux/ActivationToken.h"

namespace Vastel_Connect {

inline constexpr const char* kBusName = "com.vastel.Connect";
inline constexpr const char* kObjectPath = "/com/vastel/Connect";
inline constexpr const char* kApplicationInterface = "org.freedesktop.Application";

/// What printLine knows of standard output.
struct Output {
  /// For the signal handlers, which are set with the first line.
  std::once_flag prepared;
  /// Takes the place of a reader that is stuck.
  int nullDevice = -1;
  /// The signal to end that came while a line was written; 0 until then.
  volatile std::sig_atomic_t endingSignal = 0;
  /// The line before was not written to its end.
  std::atomic<bool> isBrokenOff = false;
};

/// The process-wide state behind the functions of Platform.h. Main thread only, except for
/// `terminating` and `output`.
struct Host {
  /// Those that are valid UTF-8, the program's own path first.
  std::vector<std::string> arguments;
  /// Null before the application's life and after it.
  AppDelegate* delegate = nullptr;
  /// Between setUriEventHandler and removeUriEventHandler.
  bool deliversUris = false;
  /// The token of the latest link.
  ActivationToken token;
  /// Null without a session bus.
  sd_bus* bus = nullptr;
  /// Null before the application's event loop is made.
  sd_event* eventLoop = nullptr;
  /// The signals that end the event loop. They are blocked, except while a line is written.
  sigset_t endingSignals{};
  /// The event loop has ended, or is about to.
  std::atomic<bool> terminating = false;
  Output output;
};

[[nodiscard]] Host& host();

/// Gives one URI to the delegate as an event, and lends `token` to the page that it opens. Nothing
/// happens while no handler is set.
void deliverUri(std::string_view uri, const ActivationToken& token);

/// They ask a program to end.
inline constexpr std::array kEndingSignals = {SIGINT, SIGTERM, SIGHUP};

/// Writes one line of the host's own to standard error.
void complain(std::string_view text);

}  // namespace Vastel_Connect

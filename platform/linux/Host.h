#pragma once

#include <systemd/sd-bus.h>

#include <string>
#include <string_view>
#include <vector>

#include "app/AppDelegate.h"
#include "platform/linux/ActivationToken.h"

namespace Vastel_Connect {

inline constexpr const char* kBusName = "com.vastel.Connect";
inline constexpr const char* kObjectPath = "/com/vastel/Connect";
inline constexpr const char* kApplicationInterface = "org.freedesktop.Application";

/// What the functions of Platform.h and the callbacks of the bus know of the process. Main thread
/// only.
struct Host {
  /// Those that are valid UTF-8, the program's own path first.
  std::vector<std::string> arguments;
  /// Null before the application's life and after it.
  AppDelegate* delegate = nullptr;
  /// Between setUriEventHandler and removeUriEventHandler.
  bool deliversUris = false;
  /// The token of the latest link.
  ActivationToken token;
  /// The latest link named a page for which no program could be started.
  bool hasFailed = false;
  /// Null without a session bus.
  sd_bus* bus = nullptr;
};

[[nodiscard]] Host& host();

/// Gives one URI to the delegate as an event, and lends `token` to the page that it opens. Nothing
/// happens while no handler is set. A lack of memory costs this link alone, and is said on standard
/// error. False: that, or there was no program for its page.
bool deliverUri(std::string_view uri, const ActivationToken& token);

/// Writes one line of the host's own to standard error, or what fits into one. Asks for no memory.
void complain(std::string_view text);

}  // namespace Vastel_Connect

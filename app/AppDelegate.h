#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Vastel_Connect {

/// A window of the host, which alone knows what it is.
class Window;

/// The event that brings a URI: its class, its ID, and the keyword of its direct parameter, as
/// four-character codes with the first character in the highest byte.
inline constexpr std::uint32_t kInternetEventClass = 0x4755524C;  // 'GURL'
inline constexpr std::uint32_t kAEGetURL = 0x4755524C;            // 'GURL'
inline constexpr std::uint32_t keyDirectObject = 0x2D2D2D2D;      // '----'

/// A get-URL event as the host received it.
struct UriEvent {
  /// Asks the event for its parameter with a keyword, and that for its text. Absent when there was
  /// no event to go with the call, when it has no such parameter, and when that holds no text.
  std::function<std::optional<std::string>(std::uint32_t keyword)> textOfParameter;
};

/// The application's one object of its own. A host creates it, drives it through its life on the
/// main thread, and hands it each URI that arrives.
class AppDelegate {
 public:
  /// Registers the URI event handler. No URI is lost from here on, and none is logged until
  /// applicationDidFinishLaunching has read the command line.
  void applicationWillFinishLaunching();
  void applicationDidFinishLaunching();
  /// Removes the URI event handler.
  void applicationWillTerminate();

  /// Takes one URI event. It is logged before it is looked into. The sender is not answered: the
  /// reply event stays with the host, untouched.
  void UriEventHandlerWithEvent(const UriEvent& event);

  /// Sets the flags from the process's arguments, the first included.
  void parseCommandLine();
  /// Reads the command line, prints what it asks for, and ends the application after a text.
  void handleCommandLine();
  /// Whether one of the switches was given that print a text and end the application.
  [[nodiscard]] bool endsAfterText() const;

  /// Logs `message` with `value` right behind it, as one line for each log flag that is set. Any
  /// thread. (log/LogMessage.cpp)
  void logMessage(std::string_view message, std::string_view value = {}) const;

  /// Carries out a whole URI: opens the web page that a screen-pop request names. Each way to fail
  /// is one log line. (uri/ProcessUri.cpp)
  void processUri(std::string_view uri) const;

  /// The outlet of the host's main window, for the interface that delegates have on every host:
  /// this program has no window, and neither reads nor sets it.
  std::weak_ptr<Window> window;

  // The switches that were given (app/ConsoleTexts.cpp). Set by parseCommandLine, cleared by
  // nothing.
  bool FlagChangeLog = false;
  bool FlagHelp = false;
  bool FlagLog = false;
  bool FlagJsonLog = false;
  bool FlagShowUri = false;
};

}  // namespace Vastel_Connect

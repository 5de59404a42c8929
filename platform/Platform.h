#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Vastel_Connect {
class AppDelegate;
}

/// What the program asks of the desktop. Each host implements these functions once. Towards the
/// program a host calls the delegate's own operations and nothing else.
namespace Vastel_Connect::platform {

/// The arguments that the process was started with, the program's own path first.
[[nodiscard]] std::vector<std::string> processArguments();

/// From now on each event of this class and ID goes to `handler`'s UriEventHandlerWithEvent.
void setUriEventHandler(AppDelegate& handler, std::uint32_t eventClass, std::uint32_t eventId);

/// No more events of this class and ID are delivered.
void removeUriEventHandler(std::uint32_t eventClass, std::uint32_t eventId);

/// Asks the application to end in the normal way: applicationWillTerminate still runs.
void terminate();

/// Whether the caller runs on the thread of the event loop. Any thread.
[[nodiscard]] bool isMainThread();

/// The current date and time in the user's own time zone, in a pattern of Unicode TR 35: yyyy, MM,
/// dd, HH, mm, ss, Z (+0100) and 'quoted text'. Any thread.
[[nodiscard]] std::string currentDateText(std::string_view pattern);

/// Opens a text that forms a URL with the user's default handler for its scheme, and does not wait
/// for it. True: something was started, which says nothing about the page. False: no handler could
/// be started, or the text has no scheme.
bool openUrl(std::string_view url);

/// Writes `line` and a line feed to standard output at once, in one piece. Errors are ignored. Any
/// thread.
void printLine(std::string_view line);

}  // namespace Vastel_Connect::platform

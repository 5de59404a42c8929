#pragma once

#include <string>
#include <string_view>
#include <vector>

/// What the program asks of the desktop. Each host implements these functions once. Towards the
/// program a host calls the delegate's own operations and nothing else.
namespace Vastel_Connect::platform {

/// The arguments that the process was started with, the program's own path first.
[[nodiscard]] std::vector<std::string> processArguments();

/// From now on each URI that arrives goes to the delegate's UriEventHandlerWithEvent.
void setUriEventHandler();

/// No more URIs are delivered.
void removeUriEventHandler();

/// Asks the application to end in the normal way: applicationWillTerminate still runs.
void terminate();

/// Whether the caller runs on the thread of the event loop. Any thread.
[[nodiscard]] bool isMainThread();

/// The time now in the user's own time zone, as a line of the log has it: 14:07:09. Any thread.
[[nodiscard]] std::string logTime();

/// The date now in the user's own time zone, as a line of the JSON log has it:
/// 2018-03-05T14:07:09+0100. Any thread.
[[nodiscard]] std::string jsonLogDate();

/// Opens a text that forms a URL and has a scheme (text/UrlText.h), as the record has it, with the
/// user's default handler for that scheme, and does not wait for it. The handler gets the text of
/// the URL (urlText). True: something was started, which says nothing about the page. False:
/// nothing was.
bool openUrl(std::string_view page);

/// Writes `line` and a line feed to standard output at once, in one piece. Errors are ignored. Any
/// thread.
void printLine(std::string_view line);

/// The exit status of a process that stops: EX_SOFTWARE of <sysexits.h>.
inline constexpr int kStopStatus = 70;

/// Ends the process at once, with kStopStatus and without a core dump.
[[noreturn]] void stopProgram();

}  // namespace Vastel_Connect::platform

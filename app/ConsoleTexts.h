#pragma once

#include <string_view>

namespace Vastel_Connect {

// The fixed texts that the start prints, in UTF-8 and each followed by an empty line. They are
// written straight to standard output, whether or not logging is on.

/// Prints the maker's name.
void printBanner();

/// Prints the switches.
void printUsage();

/// Prints what changed, newest first.
void printChangeLog();

/// How a link is made, with an example. It ends with a line feed.
extern const std::string_view UriApiText;

}  // namespace Vastel_Connect

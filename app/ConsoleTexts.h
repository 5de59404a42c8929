#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "app/AppDelegate.h"

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

/// A switch of the command line. Its flag says that it was given.
struct Switch {
  decltype(&AppDelegate::FlagLog) flag;
  /// Its names, without the sign before them, in lower case.
  std::vector<std::string_view> names;
  /// Prints its text, after which the program ends. Null for a switch that has none.
  void (*print)() = nullptr;
};

/// All switches, in the order in which their texts are printed.
[[nodiscard]] std::span<const Switch> switches();

}  // namespace Vastel_Connect

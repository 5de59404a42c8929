#pragma once

#include <string>
#include <vector>

namespace Vastel_Connect {

/// A host that does nothing but keep what it is asked for.
struct QuietHost {
  static QuietHost& instance();

  std::vector<std::string> arguments;
  std::vector<std::string> lines;
  std::vector<std::string> pages;
  int terminations = 0;
};

}  // namespace Vastel_Connect

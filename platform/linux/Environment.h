#pragma once

#include <cstdlib>
#include <string>
#include <string_view>

namespace Vastel_Connect {

/// The value of an environment variable; `fallback` where it is not set, or empty.
[[nodiscard]] inline std::string environmentText(const char* name, std::string_view fallback = "") {
  const char* value = std::getenv(name);
  return std::string(value != nullptr && *value != '\0' ? value : fallback);
}

}  // namespace Vastel_Connect

#pragma once

#include <string>
#include <string_view>

namespace Vastel_Connect {

/// What a file of settings holds.
struct TextFile {
  std::string text;
  /// Why it could not be read, for people; empty when it was.
  std::string_view error;
  /// There is no such file, or it is a link to none.
  bool isMissing = false;
};

/// Reads a regular file of at most 1 MiB, and waits for nobody.
[[nodiscard]] TextFile readTextFile(const std::string& path);

}  // namespace Vastel_Connect

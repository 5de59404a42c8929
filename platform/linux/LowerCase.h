#pragma once

#include <string>
#include <string_view>

namespace Vastel_Connect {

/// `text` with the letters of ASCII in lower case.
[[nodiscard]] inline std::string lowerCase(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return result;
}

}  // namespace Vastel_Connect

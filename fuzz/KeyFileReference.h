#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace Vastel_Connect::reference {

struct KeyFileContent {
  std::string firstGroup;
  /// By group and key.
  std::map<std::pair<std::string, std::string>, std::string> values;

  [[nodiscard]] std::string value(const std::string& key, const std::string& otherwise) const {
    const auto found = values.find({"Desktop Entry", key});
    return found != values.end() ? found->second : otherwise;
  }
};

/// No line that the reference reads is longer: std::regex takes room on the stack for each
/// character.
inline constexpr std::size_t kLongestLine = 4096;

/// What a key file says; absent when it has a line that not all readers take in the same way, or
/// one of more than kLongestLine characters.
[[nodiscard]] std::optional<KeyFileContent> keyFile(std::string_view text);

}  // namespace Vastel_Connect::reference

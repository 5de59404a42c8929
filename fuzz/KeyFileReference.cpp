#include "fuzz/KeyFileReference.h"

#include <regex>
#include <sstream>

namespace Vastel_Connect::reference {

std::optional<KeyFileContent> keyFile(std::string_view text) {
  // Printable ASCII except for the brackets; in keys, no blank either, not even in a language's
  // name.
  static const std::regex group(R"(\[([ -Z\\^-~]+)\])");
  static const std::regex entry(R"(([!-<>-Z\\^-~]+(?:\[[!-<>-Z\\^-~]+\])?)[ \t]*=[ \t]*(.*))");
  KeyFileContent content;
  std::optional<std::string> current;
  std::istringstream lines{std::string(text)};
  for (std::string line; std::getline(lines, line);) {
    for (const char c : line) {
      if (static_cast<unsigned char>(c) < ' ' && c != '\t') return std::nullopt;
    }
    std::smatch match;
    if (line.empty() || line[0] == '#') continue;
    if (line.size() > kLongestLine) return std::nullopt;
    if (std::regex_match(line, match, group)) {
      current = match[1];
      if (content.firstGroup.empty()) content.firstGroup = *current;
    } else if (line[0] != '[' && current && std::regex_match(line, match, entry)) {
      content.values[{*current, match[1]}] = match[2];
    } else {
      return std::nullopt;
    }
  }
  return content;
}

}  // namespace Vastel_Connect::reference

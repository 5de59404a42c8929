#include "text/Split.h"

namespace Vastel_Connect {

std::vector<std::string_view> splitText(std::string_view text, std::string_view separator) {
  std::vector<std::string_view> parts;
  if (!separator.empty()) {
    for (auto end = text.find(separator); end != text.npos; end = text.find(separator)) {
      parts.push_back(text.substr(0, end));
      text.remove_prefix(end + separator.size());
    }
  }
  parts.push_back(text);
  return parts;
}

std::vector<std::string> splitWords(std::string_view text, std::string_view separator) {
  std::vector<std::string> words;
  for (const std::string_view part : splitText(text, separator)) {
    if (!part.empty()) words.emplace_back(part);
  }
  return words;
}

}  // namespace Vastel_Connect

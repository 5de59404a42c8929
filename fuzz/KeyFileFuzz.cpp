// Texts of the desktop's "[group]" and "key=value" form.
#include <map>
#include <regex>
#include <sstream>

#include "fuzz/Fuzz.h"
#include "platform/linux/KeyFile.h"

using namespace Vastel_Connect;

namespace {

/// No longer line is tried: std::regex takes room on the stack for each character.
constexpr std::size_t kLongestLine = 4096;

struct Content {
  std::string firstGroup;
  /// By group and key.
  std::map<std::pair<std::string, std::string>, std::string> values;
};

/// What a key file says; absent when it has a line that not all readers take in the same way.
std::optional<Content> contentOf(std::string_view text) {
  // Printable ASCII except for the brackets; in keys, no blank either, not even in a language's
  // name.
  static const std::regex group(R"(\[([ -Z\\^-~]+)\])");
  static const std::regex entry(R"(([!-<>-Z\\^-~]+(?:\[[!-<>-Z\\^-~]+\])?)[ \t]*=[ \t]*(.*))");
  Content content;
  std::optional<std::string> current;
  std::istringstream lines{std::string(text)};
  for (std::string line; std::getline(lines, line);) {
    for (const char c : line) {
      if (static_cast<unsigned char>(c) < ' ' && c != '\t') return std::nullopt;
    }
    std::smatch match;
    if (line.empty() || line[0] == '#') continue;
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto text = fuzz::textOf(data, size);
  if (size > kLongestLine) return 0;
  const auto content = contentOf(text);
  const auto keyFile = KeyFile::parse(std::string(text));
  fuzz::expect(keyFile.has_value() == content.has_value(), "is it such a file");
  if (!keyFile) return 0;
  fuzz::expect(keyFile->firstGroup() == content->firstGroup, "the first group");
  for (const auto& [name, value] : content->values) {
    fuzz::expect(keyFile->value(name.first, name.second) == value, "a value");
  }
  fuzz::expect(!keyFile->value("no such group", "Key"), "a value of nowhere");
  fuzz::expect(!keyFile->value(content->firstGroup, "no such key"), "a value of no key");
  return 0;
}

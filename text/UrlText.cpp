#include "text/UrlText.h"

#include <algorithm>
#include <array>

#include "text/Ascii.h"

namespace Vastel_Connect {
namespace {

constexpr std::string_view kUrlCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
    "!$&'()*+,-./:;=?@_~[]";

constexpr std::array<bool, 256> kIsUrlCharacter = [] {
  std::array<bool, 256> table{};
  for (const char c : kUrlCharacters) table[static_cast<unsigned char>(c)] = true;
  return table;
}();

bool isHexDigit(char c) {
  return isAsciiDigit(c) || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

bool isSchemeCharacter(char c) {
  return isAsciiLetter(c) || isAsciiDigit(c) || c == '+' || c == '-' || c == '.';
}

/// Where the colon stands behind a beginning that consists of a scheme's characters, be it empty.
std::optional<std::size_t> schemeColon(std::string_view text) {
  const auto* const end = std::find_if_not(text.begin(), text.end(), isSchemeCharacter);
  if (end == text.end() || *end != ':') return std::nullopt;
  return end - text.begin();
}

/// The host in what follows the scheme; empty without one.
std::string_view hostOf(std::string_view text) {
  if (!text.starts_with("//")) return {};
  text = text.substr(2, text.find_first_of("/?#", 2) - 2);
  text.remove_prefix(text.find('@') + 1);
  const std::size_t address = text.starts_with('[') ? text.find(']') : 0;
  return text.substr(0, text.find(':', address));
}

}  // namespace

bool formsUrl(std::string_view text) {
  bool sawHash = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (kIsUrlCharacter[static_cast<unsigned char>(c)]) continue;
    if (c == '%' && text.size() - i > 2 && isHexDigit(text[i + 1]) && isHexDigit(text[i + 2])) {
      continue;
    }
    if (c != '#' || sawHash) return false;
    sawHash = true;
  }
  return true;
}

std::optional<std::string> urlText(std::string_view text) {
  if (!formsUrl(text)) return std::nullopt;
  const auto colon = schemeColon(text);
  const std::string_view rest = colon ? text.substr(*colon + 1) : text;
  const bool isOpaque = colon && !rest.starts_with('/');
  const std::string_view host = hostOf(rest);
  std::string result;
  result.reserve(text.size());
  for (const char& c : text) {
    if (c == '[' && &c != host.data()) {
      result += "%5B";
    } else if (c == ']' && &c + 1 != host.data() + host.size()) {
      result += "%5D";
    } else if (c == '#' && isOpaque) {
      result += "%23";
    } else {
      result += c;
    }
  }
  return result;
}

std::string_view urlScheme(std::string_view text) {
  if (text.empty() || !isAsciiLetter(text.front())) return {};
  return text.substr(0, schemeColon(text).value_or(0));
}

}  // namespace Vastel_Connect

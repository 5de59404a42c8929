#include "text/UrlText.h"

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

}  // namespace

bool formsUrl(std::string_view text) {
  bool sawHash = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (kIsUrlCharacter[static_cast<unsigned char>(c)]) continue;
    if (c == '%' && text.size() - i > 2 && isHexDigit(text[i + 1]) && isHexDigit(text[i + 2])) {
      i += 2;
    } else if (c == '#' && !sawHash) {
      sawHash = true;
    } else {
      return false;
    }
  }
  return true;
}

std::string_view urlScheme(std::string_view text) {
  if (text.empty() || !isAsciiLetter(text.front())) return {};
  std::size_t length = 1;
  while (length < text.size() && isSchemeCharacter(text[length])) ++length;
  if (length == text.size() || text[length] != ':') return {};
  return text.substr(0, length);
}

}  // namespace Vastel_Connect

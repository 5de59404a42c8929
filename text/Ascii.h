#pragma once

#include <string>
#include <string_view>

namespace Vastel_Connect {

// The letters and digits of ASCII, whatever the process's locale.

[[nodiscard]] constexpr bool isAsciiLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

[[nodiscard]] constexpr bool isAsciiDigit(char c) {
  return c >= '0' && c <= '9';
}

[[nodiscard]] constexpr bool isAsciiAlphanumeric(char c) {
  return isAsciiLetter(c) || isAsciiDigit(c);
}

[[nodiscard]] constexpr bool isAsciiHexDigit(char c) {
  return isAsciiDigit(c) || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

[[nodiscard]] constexpr char asciiLowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// The hexadecimal digit, in upper case, of a number below 16.
[[nodiscard]] constexpr char asciiHexDigit(int number) {
  return static_cast<char>(number < 10 ? '0' + number : 'A' + number - 10);
}

/// `text` with the letters of ASCII in lower case.
[[nodiscard]] inline std::string asciiLowerCase(std::string_view text) {
  std::string result(text);
  for (char& c : result) c = asciiLowerCase(c);
  return result;
}

/// `text` with each byte that is no letter or digit of ASCII, and not in `plain`, as `sign` and two
/// hexadecimal digits in lower case.
[[nodiscard]] inline std::string escapeBytes(std::string_view text, std::string_view plain,
                                             std::string_view sign) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string escaped;
  for (const char c : text) {
    if (isAsciiAlphanumeric(c) || plain.find(c) != plain.npos) {
      escaped += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      escaped.append(sign) += {kDigits[byte / 16], kDigits[byte % 16]};
    }
  }
  return escaped;
}

}  // namespace Vastel_Connect

#pragma once

#include <string>
#include <string_view>

namespace Vastel_Connect {

/// The base64 of `bytes`: the program itself only decodes.
inline std::string base64Text(std::string_view bytes) {
  constexpr std::string_view kAlphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    unsigned long group = 0;
    for (std::size_t j = i; j < i + 3; ++j) {
      group = group * 256 + (j < bytes.size() ? static_cast<unsigned char>(bytes[j]) : 0);
    }
    for (const int shift : {18, 12, 6, 0}) text += kAlphabet[group >> shift & 63];
  }
  const std::size_t padding = (3 - bytes.size() % 3) % 3;
  return text.replace(text.size() - padding, padding, padding, '=');
}

}  // namespace Vastel_Connect

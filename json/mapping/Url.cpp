#include "json/mapping/Url.h"

#include "text/Ascii.h"
#include "text/UrlText.h"
#include "text/Utf8.h"

namespace Vastel_Connect {
namespace {

constexpr std::string_view kQueryCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
    "-._~!$&'()*+,;=:@/?";

}  // namespace

std::optional<Url> Url::fromText(std::string_view text) {
  auto url = urlText(text);
  if (!url) return std::nullopt;
  return Url(*std::move(url));
}

std::optional<std::string> percentEncodedForQuery(std::string_view text) {
  if (!isUtf8(text)) return std::nullopt;
  std::string encoded;
  encoded.reserve(text.size());
  for (const char c : text) {
    if (kQueryCharacters.find(c) != kQueryCharacters.npos) {
      encoded += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      encoded += {'%', asciiHexDigit(byte / 16), asciiHexDigit(byte % 16)};
    }
  }
  return encoded;
}

}  // namespace Vastel_Connect

#include "json/mapping/Url.h"

#include "text/Ascii.h"
#include "text/UrlText.h"
#include "text/Utf8.h"

namespace Vastel_Connect {
namespace {

bool isQueryCharacter(char c) {
  constexpr std::string_view kMarks = "-._~!$&'()*+,;=:@/?";
  return isAsciiAlphanumeric(c) || kMarks.find(c) != kMarks.npos;
}

}  // namespace

std::optional<Url> Url::fromText(std::string_view text) {
  if (!formsUrl(text)) return std::nullopt;
  return Url(urlText(text));
}

std::optional<std::string> percentEncodedForQuery(std::string_view text) {
  if (!isUtf8(text)) return std::nullopt;
  std::string encoded;
  encoded.reserve(text.size());
  for (const char c : text) {
    if (isQueryCharacter(c)) {
      encoded += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      encoded += {'%', asciiHexDigit(byte / 16), asciiHexDigit(byte % 16)};
    }
  }
  return encoded;
}

}  // namespace Vastel_Connect

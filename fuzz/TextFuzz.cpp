// What a text alone decides: whether it is base64, UTF-8 or a URL, its scheme, and its form within
// a URL's query.
#include "fuzz/Fuzz.h"
#include "fuzz/Reference.h"
#include "json/mapping/Url.h"
#include "text/Base64.h"
#include "text/UrlText.h"
#include "text/Utf8.h"

using namespace Vastel_Connect;

namespace {

/// `encoded` with each "%" and its two digits replaced by the byte.
std::string decoded(const std::string& encoded) {
  std::string bytes;
  for (std::size_t i = 0; i < encoded.size(); ++i) {
    const bool isByte = encoded[i] == '%';
    bytes +=
        isByte ? static_cast<char>(std::stoi(encoded.substr(i + 1, 2), nullptr, 16)) : encoded[i];
    if (isByte) i += 2;
  }
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto text = fuzz::textOf(data, size);
  fuzz::expect(decodeBase64(text) == reference::base64(text), "decodeBase64");
  fuzz::expect(isUtf8(text) == reference::isUtf8(text), "isUtf8");

  const bool isUrl = reference::isUrl(text);
  fuzz::expect(formsUrl(text) == isUrl, "formsUrl");
  fuzz::expect(urlScheme(text).size() == reference::schemeLength(text), "urlScheme");
  const auto url = Url::fromText(text);
  fuzz::expect(url.has_value() == isUrl, "Url");
  fuzz::expect(!url || url->absoluteString() == reference::urlText(std::string(text)), "its text");

  const auto query = percentEncodedForQuery(text);
  fuzz::expect(query.has_value() == reference::isUtf8(text), "is it part of a query");
  if (!query) return 0;
  fuzz::expect(reference::isUrl(*query) && query->find_first_of("#[]") == query->npos, "a query");
  fuzz::expect(decoded(*query) == text, "what a query stands for");
  return 0;
}

// Which texts form a URL, what their scheme is, and how a text is made part of one.
#include "fuzz/Fuzz.h"
#include "fuzz/Reference.h"
#include "json/mapping/Url.h"
#include "text/UrlText.h"

using namespace Vastel_Connect;

namespace {

/// `encoded` with each "%" and its two digits replaced by the byte.
std::string decoded(const std::string& encoded) {
  std::string bytes;
  for (std::size_t i = 0; i < encoded.size(); ++i) {
    if (encoded[i] != '%') {
      bytes += encoded[i];
    } else {
      bytes += static_cast<char>(std::stoi(encoded.substr(i + 1, 2), nullptr, 16));
      i += 2;
    }
  }
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto text = fuzz::textOf(data, size);
  const bool isUrl = reference::isUrl(text);
  fuzz::expect(formsUrl(text) == isUrl, "formsUrl");
  fuzz::expect(urlScheme(text).size() == reference::schemeLength(text), "urlScheme");
  const auto url = Url::fromText(text);
  fuzz::expect(url.has_value() == isUrl, "Url");
  fuzz::expect(!url || url->absoluteString() == reference::urlText(std::string(text)), "its text");
  fuzz::expect(!url || Url::fromText(url->absoluteString()) == url, "the text of its text");
  if (const auto query = percentEncodedForQuery(text)) {
    fuzz::expect(reference::isUrl(*query) && query->find_first_of("#[]") == query->npos, "query");
    fuzz::expect(decoded(*query) == text, "what a query stands for");
  }
  return 0;
}

#include "text/UrlText.h"

#include <algorithm>
#include <optional>

#include "text/Ascii.h"

namespace Vastel_Connect {
namespace {

bool isUrlCharacter(char c) {
  constexpr std::string_view kMarks = "!$&'()*+,-./:;=?@_~[]";
  return isAsciiAlphanumeric(c) || kMarks.find(c) != kMarks.npos;
}

bool isSchemeCharacter(char c) {
  return isAsciiAlphanumeric(c) || c == '+' || c == '-' || c == '.';
}

/// Where the colon stands behind a beginning that consists of a scheme's characters, be it empty.
std::optional<std::size_t> schemeColon(std::string_view text) {
  const auto* const end = std::find_if_not(text.begin(), text.end(), isSchemeCharacter);
  if (end == text.end() || *end != ':') return std::nullopt;
  return end - text.begin();
}

/// The offsets of a host's first character and of the one behind its last.
struct Host {
  std::size_t begin;
  std::size_t end;
};

/// The host in `url`, whose scheme and its ":" are the first `start` characters. Absent where no
/// "//" follows them.
std::optional<Host> findHost(std::string_view url, std::size_t start) {
  if (!url.substr(start).starts_with("//")) return std::nullopt;
  const std::size_t authority = start + 2;
  Host host = {authority, std::min(url.find_first_of("/?#", authority), url.size())};
  const std::size_t at = url.find('@', authority);
  if (at < host.end) host.begin = at + 1;
  // The host ends at a colon, but not within brackets, which may be anywhere, or never be closed.
  bool inBrackets = false;
  for (std::size_t i = host.begin; i < host.end; ++i) {
    if (url[i] == '[') inBrackets = true;
    if (url[i] == ']') inBrackets = false;
    if (url[i] == ':' && !inBrackets) host.end = i;
  }
  return host;
}

}  // namespace

bool formsUrl(std::string_view text) {
  bool sawHash = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (isUrlCharacter(c)) continue;
    if (c == '%' && text.size() - i > 2 && isAsciiHexDigit(text[i + 1]) &&
        isAsciiHexDigit(text[i + 2])) {
      continue;
    }
    if (c != '#' || sawHash) return false;
    sawHash = true;
  }
  return true;
}

std::string urlText(std::string_view url) {
  const auto colon = schemeColon(url);
  const std::size_t start = colon ? *colon + 1 : 0;
  const bool isOpaque = colon && !url.substr(start).starts_with('/');
  const auto host = findHost(url, start);
  std::string text;
  text.reserve(url.size());
  for (std::size_t i = 0; i < url.size(); ++i) {
    const char c = url[i];
    const bool beginsHost = host && i == host->begin;
    const bool endsHost = host && i + 1 == host->end;
    if (c == '[' && !beginsHost) {
      text += "%5B";
    } else if (c == ']' && !endsHost) {
      text += "%5D";
    } else if (c == '#' && isOpaque) {
      text += "%23";
    } else {
      text += c;
    }
  }
  return text;
}

std::string_view urlScheme(std::string_view text) {
  if (text.empty() || !isAsciiLetter(text.front())) return {};
  return text.substr(0, schemeColon(text).value_or(0));
}

}  // namespace Vastel_Connect

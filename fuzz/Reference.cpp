#include "fuzz/Reference.h"

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <regex>

namespace Vastel_Connect::reference {
namespace {

bool isOneOf(char c, std::string_view set) {
  return set.find(c) != set.npos;
}

bool isAlphanumeric(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0;
}

bool isHex(char c) {
  return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

}  // namespace

std::optional<std::string> base64(std::string_view text) {
  constexpr std::string_view kAlphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  if (text.size() % 4 != 0) return std::nullopt;
  std::size_t signs = text.size();
  while (signs > 0 && text.size() - signs < 2 && text[signs - 1] == '=') --signs;
  std::string bits;
  for (std::size_t i = 0; i < signs; ++i) {
    const auto index = kAlphabet.find(text[i]);
    if (index == kAlphabet.npos) return std::nullopt;
    for (int bit = 5; bit >= 0; --bit) bits += (index >> bit & 1) != 0 ? '1' : '0';
  }
  std::string bytes;
  for (std::size_t i = 0; i + 8 <= bits.size(); i += 8) {
    bytes += static_cast<char>(std::stoi(bits.substr(i, 8), nullptr, 2));
  }
  return bytes;
}

std::string encodeUtf8(unsigned long codePoint) {
  const auto tail = [codePoint](int shift) {
    return static_cast<char>(0x80 + (codePoint >> shift) % 0x40);
  };
  if (codePoint < 0x80) return {static_cast<char>(codePoint)};
  if (codePoint < 0x800) return {static_cast<char>(0xC0 + (codePoint >> 6)), tail(0)};
  if (codePoint < 0x10000) return {static_cast<char>(0xE0 + (codePoint >> 12)), tail(6), tail(0)};
  return {static_cast<char>(0xF0 + (codePoint >> 18)), tail(12), tail(6), tail(0)};
}

bool isUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    const auto lead = static_cast<unsigned char>(bytes.front());
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (bytes.size() < length) return false;
    unsigned long codePoint = length == 1 ? lead : lead % (1U << (7 - length));
    for (std::size_t i = 1; i < length; ++i) {
      codePoint = codePoint * 0x40 + static_cast<unsigned char>(bytes[i]) % 0x40;
    }
    const bool surrogate = codePoint >= 0xD800 && codePoint < 0xE000;
    if (surrogate || codePoint > 0x10FFFF) return false;
    if (encodeUtf8(codePoint) != bytes.substr(0, length)) return false;
    bytes.remove_prefix(length);
  }
  return true;
}

bool isUrl(std::string_view text) {
  if (std::count(text.begin(), text.end(), '#') > 1) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%') {
      if (i + 2 >= text.size() || !isHex(text[i + 1]) || !isHex(text[i + 2])) return false;
    } else if (!isAlphanumeric(text[i]) && !isOneOf(text[i], "-_.!~*'();/?:@&=+$,[]#")) {
      return false;
    }
  }
  return true;
}

std::string urlText(const std::string& url) {
  // Scheme; user; host, which ends at a colon that no brackets hold; and all that follows.
  static const std::regex parts(
      R"(([A-Za-z0-9+.\-]*:)?(?:(//)([^/?#@]*@)?((?:\[[^/?#\]]*\]?|[^/?#:\[])*))?([^]*))");
  std::smatch found;
  std::regex_match(url, found, parts);
  const bool opaque = found[1].matched && url.substr(found.str(1).size(), 1) != "/";
  const auto escape = [opaque](std::string_view text) {
    std::string escaped;
    for (const char c : text) {
      escaped += c == '['             ? "%5B"
                 : c == ']'           ? "%5D"
                 : c == '#' && opaque ? "%23"
                                      : std::string(1, c);
    }
    return escaped;
  };
  std::string host = found[4];
  const bool opens = host.substr(0, 1) == "[";
  const bool closes = !host.empty() && host.back() == ']';
  host = host.substr(opens ? 1 : 0, host.size() - (opens ? 1 : 0) - (closes ? 1 : 0));
  return found.str(1) + found.str(2) + escape(found.str(3)) + (opens ? "[" : "") + escape(host) +
         (closes ? "]" : "") + escape(found.str(5));
}

std::size_t schemeLength(std::string_view text) {
  static const std::regex form("([A-Za-z][A-Za-z0-9+.-]*):");
  std::cmatch found;
  std::regex_search(text.begin(), text.end(), found, form, std::regex_constants::match_continuous);
  return static_cast<std::size_t>(found.length(1));
}

bool listHasScheme(std::string_view list, std::string_view scheme) {
  std::string pattern = "(^|;)[ \t]*";
  for (const char c : scheme) pattern.append("[").append(1, c).append("]");
  return std::regex_search(std::string(list),
                           std::regex(pattern + "[ \t]*(;|$)", std::regex::icase));
}

Outcome followLink(std::string_view uri) {
  Outcome outcome;
  const auto say = [&outcome](std::string text) { outcome.messages.push_back(std::move(text)); };
  const auto colon = uri.find(':');
  if (colon == uri.npos) return say("invalid protocol"), outcome;
  if (colon != 9 || ::strncasecmp(uri.data(), "screenpop", 9) != 0) {
    return say("Invalid protocol"), outcome;
  }
  say("process screenpop");
  std::string_view command = uri.substr(colon + 1);
  if (command.substr(0, 2) == "//") command = command.substr(2);
  const auto decoded = base64(command);
  if (command.empty() || !decoded || !isUtf8(*decoded)) return say("Could not decode"), outcome;
  const auto request = parseJson(*decoded);
  outcome.stops = request && request->kind == Json::Array;
  if (outcome.stops) return outcome;
  const Json page =
      request && request->members.contains("WebPage") ? request->members.at("WebPage") : Json();
  if (page.kind != Json::String) return say("no webpage to open"), outcome;
  say("webpage: " + page.text);
  if (isUrl(page.text) && schemeLength(page.text) > 0) outcome.page = page.text;
  return outcome;
}

}  // namespace Vastel_Connect::reference

#include "bench/Straightforward.h"

#include <boost/json.hpp>
#include <cctype>

#include "platform/Platform.h"

namespace Vastel_Connect::bench::straightforward {

std::optional<std::pair<std::string, std::string>> split(const std::string& uri) {
  const std::size_t colon = uri.find(':');
  if (colon == std::string::npos) return std::nullopt;
  std::string command = uri.substr(colon + 1);
  if (command.substr(0, 2) == "//") command = command.substr(2);
  return std::pair(uri.substr(0, colon), command);
}

std::optional<std::string> decodeBase64(const std::string& text) {
  static const std::string alphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  if (text.size() % 4 != 0) return std::nullopt;
  std::string bytes;
  unsigned bits = 0;
  int count = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '=' && i + 2 >= text.size()) break;
    const std::size_t value = alphabet.find(text[i]);
    if (value == std::string::npos) return std::nullopt;
    bits = bits << 6 | static_cast<unsigned>(value);
    count += 6;
    if (count >= 8) {
      count -= 8;
      bytes.push_back(static_cast<char>(bits >> count));
    }
  }
  return bytes;
}

bool isUtf8(const std::string& text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto lead = static_cast<unsigned char>(text[i]);
    if (lead < 0x80) continue;
    const std::size_t more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    if (lead < 0xC2 || lead > 0xF4 || i + more >= text.size()) return false;
    for (std::size_t j = 0; j < more; ++j) {
      if ((static_cast<unsigned char>(text[++i]) & 0xC0) != 0x80) return false;
    }
  }
  return true;
}

std::optional<std::string> webPage(const std::string& json) {
  boost::system::error_code error;
  const boost::json::value document = boost::json::parse(json, error);
  if (error || !document.is_object()) return std::nullopt;
  const auto* page = document.get_object().if_contains("WebPage");
  if (page == nullptr || !page->is_string()) return std::nullopt;
  return std::string(page->get_string());
}

bool formsUrl(const std::string& text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    const bool plain =
        std::isalnum(c) != 0 || std::string("!$&'()*+,-./:;=?@_~[]#%").find(text[i]) != text.npos;
    if (!plain) return false;
  }
  return true;
}

void logMessage(bool on, const std::string& message) {
  const std::string line = "Log " + platform::logTime() + "> " + message;
  if (on) platform::printLine(line);
}

}  // namespace Vastel_Connect::bench::straightforward

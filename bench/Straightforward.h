#pragma once

#include <optional>
#include <string>
#include <string_view>

// What one would write first, as a measure of what the program's own versions gain.
namespace Vastel_Connect::bench::straightforward {

[[nodiscard]] std::optional<std::pair<std::string, std::string>> split(const std::string& uri);
[[nodiscard]] std::optional<std::string> decodeBase64(const std::string& text);
[[nodiscard]] bool isUtf8(const std::string& text);
[[nodiscard]] std::optional<std::string> webPage(const std::string& json);
[[nodiscard]] bool formsUrl(const std::string& text);
void logMessage(bool on, const std::string& message);

}  // namespace Vastel_Connect::bench::straightforward

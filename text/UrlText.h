#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Vastel_Connect {

/// Whether a text forms a URL as NSURL's initWithString: saw it up to macOS 13: characters of RFC
/// 2396 and the brackets of RFC 2732 anywhere, "%" before two hex digits, "#" at most once. The
/// syntax is not looked at, so "", "foo" and "/etc/passwd" do form one. The same on every host.
[[nodiscard]] bool formsUrl(std::string_view text);

/// The text of the URL that `text` forms, as NSURL's absoluteString: gave it up to macOS 13. Absent
/// when it forms none. Where they could not be what they look like, brackets and "#" are escaped:
/// "[" and "]" everywhere but at the beginning and the end of the host, "#" where no "/" follows
/// the scheme. So "tel:#1" is "tel:%231", and "http://[::1]/?a[]" is "http://[::1]/?a%5B%5D".
[[nodiscard]] std::optional<std::string> urlText(std::string_view text);

/// The RFC 3986 scheme that `text` begins with, without its ":". Empty when there is none.
[[nodiscard]] std::string_view urlScheme(std::string_view text);

}  // namespace Vastel_Connect

#pragma once

#include <string>
#include <string_view>

namespace Vastel_Connect {

/// Whether a text forms a URL as NSURL's initWithString: saw it up to macOS 13: characters of RFC
/// 2396 and the brackets of RFC 2732 anywhere, "%" before two hex digits, "#" at most once. The
/// syntax is not looked at, so "", "foo" and "/etc/passwd" do form one. The same on every host.
[[nodiscard]] bool formsUrl(std::string_view text);

/// The text of the URL that `url`, for which formsUrl is true, forms, as NSURL's absoluteString:
/// gave it on macOS 10.14. Where they could not be what they look like, brackets and "#" are
/// escaped: "[" but where the host begins, "]" but where it ends, "#" where no "/" follows the
/// scheme. So "tel:#1" is "tel:%231", and "http://[::1]/?a[]" is "http://[::1]/?a%5B%5D". A scheme
/// counts here whatever its first character is, as it did there.
[[nodiscard]] std::string urlText(std::string_view url);

/// The RFC 3986 scheme that `text` begins with, without its ":". Empty when there is none.
[[nodiscard]] std::string_view urlScheme(std::string_view text);

}  // namespace Vastel_Connect

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Vastel_Connect {

/// Decodes base64 of RFC 4648's standard alphabet, padded with "=" to a multiple of four
/// characters. Strict: absent for any other character (white space, "-", "_", "%"), for missing or
/// misplaced padding. The unused bits before padding are not looked at, nor does Foundation: "QR=="
/// is "Q". The empty text decodes to the empty text.
[[nodiscard]] std::optional<std::string> decodeBase64(std::string_view text);

}  // namespace Vastel_Connect

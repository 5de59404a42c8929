#pragma once

#include <string_view>

namespace Vastel_Connect {

/// Whether `text` is UTF-8 as RFC 3629 has it: no overlong form, no surrogate, nothing above
/// U+10FFFF. The empty text is.
[[nodiscard]] bool isUtf8(std::string_view text);

}  // namespace Vastel_Connect

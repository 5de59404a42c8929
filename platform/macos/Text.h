#pragma once

#import <Foundation/Foundation.h>

#include <optional>
#include <string>
#include <string_view>

namespace Vastel_Connect {

/// The UTF-8 of `text`, a NUL inside it and a byte order mark before it included. A surrogate
/// without its other half becomes U+FFFD. Absent for nil only: the empty text stays a text.
[[nodiscard]] std::optional<std::string> utf8Text(NSString* text);

/// The text with these bytes of UTF-8, a NUL inside it included. Nil when they are not UTF-8.
[[nodiscard]] NSString* foundationText(std::string_view utf8);

}  // namespace Vastel_Connect

#pragma once

#include <string_view>

namespace Vastel_Connect {

/// Whether a list such as "https;mailto;" has a scheme: as a whole word between semicolons, in
/// capitals or not, with or without blanks and tabs around it. There are no patterns: no scheme
/// equals "*".
[[nodiscard]] bool listHasScheme(std::string_view list, std::string_view scheme);

}  // namespace Vastel_Connect

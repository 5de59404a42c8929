#pragma once

#include <string_view>

namespace Vastel_Connect {

/// Whether a whole argument equals a switch's spelling (ASCII, lower case) apart from letter case.
/// Case is Unicode's: beside the ASCII letters, only U+017F (long s) folds to a letter of ASCII
/// that a spelling holds, as a comparison of all code points against all spellings showed.
[[nodiscard]] bool equalsSwitch(std::string_view argument, std::string_view spelling);

}  // namespace Vastel_Connect

#pragma once

#include <string_view>

namespace Vastel_Connect {

/// Whether a whole text equals a switch's name (ASCII, lower case) apart from letter case. Case is
/// Unicode's: beside the ASCII letters, only U+017F (long s) folds to a letter of ASCII that a name
/// holds, as a comparison of all code points against all names showed. A new name with a "k" has to
/// take U+212A (Kelvin) as well.
[[nodiscard]] bool equalsSwitch(std::string_view text, std::string_view name);

}  // namespace Vastel_Connect

#include "app/SwitchText.h"

#include "text/Ascii.h"

namespace Vastel_Connect {
namespace {

constexpr std::string_view kLongS = "\xC5\xBF";  // U+017F

}  // namespace

bool equalsSwitch(std::string_view argument, std::string_view spelling) {
  for (const char expected : spelling) {
    if (expected == 's' && argument.starts_with(kLongS)) {
      argument.remove_prefix(kLongS.size());
    } else if (!argument.empty() && asciiLowerCase(argument.front()) == expected) {
      argument.remove_prefix(1);
    } else {
      return false;
    }
  }
  return argument.empty();
}

}  // namespace Vastel_Connect

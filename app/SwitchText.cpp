#include "app/SwitchText.h"

#include "text/Ascii.h"

namespace Vastel_Connect {
namespace {

constexpr std::string_view kLongS = "\xC5\xBF";  // U+017F

}  // namespace

bool equalsSwitch(std::string_view text, std::string_view name) {
  for (const char expected : name) {
    if (expected == 's' && text.starts_with(kLongS)) {
      text.remove_prefix(kLongS.size());
    } else if (!text.empty() && asciiLowerCase(text.front()) == expected) {
      text.remove_prefix(1);
    } else {
      return false;
    }
  }
  return text.empty();
}

}  // namespace Vastel_Connect

// By UTF-16 code units both ways: Foundation's own conversions drop a byte order mark, stop at a
// NUL or refuse a lone surrogate, each a little differently.
#import "platform/macos/Text.h"

#include <utf8.h>

#include <iterator>
#include <span>
#include <vector>

#include "text/Utf8.h"

namespace Vastel_Connect {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool isLead(unichar unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}

bool isTrail(unichar unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

/// The code point that begins at `i`, which moves to its last unit.
char32_t codePoint(std::span<const unichar> units, std::size_t& i) {
  const unichar unit = units[i];
  if (isLead(unit) && i + 1 < units.size() && isTrail(units[i + 1])) {
    const unichar trail = units[++i];
    return 0x10000U + ((unit - 0xD800U) << 10U) + (trail - 0xDC00U);
  }
  return isLead(unit) || isTrail(unit) ? kReplacement : unit;
}

}  // namespace

std::optional<std::string> utf8Text(NSString* text) {
  if (text == nil) return std::nullopt;
  std::vector<unichar> units(text.length);
  [text getCharacters:units.data() range:NSMakeRange(0, units.size())];
  std::string utf8;
  for (std::size_t i = 0; i < units.size(); ++i) {
    utf8::append(codePoint(units, i), std::back_inserter(utf8));
  }
  return utf8;
}

NSString* foundationText(std::string_view utf8) {
  if (!isUtf8(utf8)) return nil;
  if (utf8.empty()) return @"";  // Apple's raises an exception for a null pointer to no units.
  std::vector<unichar> units;
  utf8::utf8to16(utf8.begin(), utf8.end(), std::back_inserter(units));
  return [NSString stringWithCharacters:units.data() length:units.size()];
}

}  // namespace Vastel_Connect

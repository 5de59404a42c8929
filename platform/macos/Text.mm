// By UTF-16 code units both ways: Foundation's own conversions drop a byte order mark, stop at a
// NUL or refuse a lone surrogate, each a little differently.
#import "platform/macos/Text.h"

#include <utf8.h>

#include <iterator>

namespace Vastel_Connect {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool isLead(char16_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}

bool isTrail(char16_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

/// The code point that begins at `i`, which moves to its last unit.
char32_t codePoint(std::u16string_view units, std::size_t& i) {
  const char16_t unit = units[i];
  if (isLead(unit) && i + 1 < units.size() && isTrail(units[i + 1])) {
    const char16_t trail = units[++i];
    return 0x10000U + ((unit - 0xD800U) << 10U) + (trail - 0xDC00U);
  }
  return isLead(unit) || isTrail(unit) ? kReplacement : unit;
}

}  // namespace

std::optional<std::string> utf8Text(NSString* text) {
  if (text == nil) return std::nullopt;
  static_assert(sizeof(unichar) == sizeof(char16_t));
  std::u16string units(text.length, u'\0');
  [text getCharacters:reinterpret_cast<unichar*>(units.data()) range:NSMakeRange(0, units.size())];
  std::string utf8;
  for (std::size_t i = 0; i < units.size(); ++i) {
    utf8::append(codePoint(units, i), std::back_inserter(utf8));
  }
  return utf8;
}

NSString* foundationText(std::string_view utf8) {
  if (!utf8::is_valid(utf8.begin(), utf8.end())) return nil;
  std::u16string units;
  utf8::utf8to16(utf8.begin(), utf8.end(), std::back_inserter(units));
  return [NSString stringWithCharacters:reinterpret_cast<const unichar*>(units.data())
                                 length:units.size()];
}

}  // namespace Vastel_Connect

#include "text/Utf8.h"

#include <utf8.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace Vastel_Connect {
namespace {

bool isAscii(char byte) {
  return static_cast<unsigned char>(byte) < 0x80;
}

/// The first byte that is not ASCII, or `end`. Looks at eight bytes at a time.
const char* skipAscii(const char* at, const char* end) {
  std::uint64_t word = 0;
  for (; end - at >= 8; at += 8) {
    std::memcpy(&word, at, 8);
    if ((word & 0x8080808080808080U) != 0) break;
  }
  return std::find_if_not(at, end, isAscii);
}

}  // namespace

bool isUtf8(std::string_view text) {
  // Most of a text is ASCII. No sequence holds any of it, so each run between can be judged alone.
  const char* at = text.data();
  const char* const end = at + text.size();
  while ((at = skipAscii(at, end)) != end) {
    const char* const run = at;
    at = std::find_if(at, end, isAscii);
    if (!utf8::is_valid(run, at)) return false;
  }
  return true;
}

}  // namespace Vastel_Connect

#include "json/mapping/Uuid.h"

#include <string_view>

namespace Vastel_Connect {
namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";

}  // namespace

std::string Uuid::uuidString() const {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += {kHexDigits[bytes[i] / 16U], kHexDigits[bytes[i] % 16U]};
  }
  return text;
}

}  // namespace Vastel_Connect

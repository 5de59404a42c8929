#include "json/mapping/Uuid.h"

#include "text/Ascii.h"

namespace Vastel_Connect {

std::string Uuid::uuidString() const {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += {asciiHexDigit(bytes[i] / 16), asciiHexDigit(bytes[i] % 16)};
  }
  return text;
}

}  // namespace Vastel_Connect

#include "text/Utf8.h"

#include <utf8.h>

namespace Vastel_Connect {

bool isUtf8(std::string_view text) {
  return utf8::is_valid(text.begin(), text.end());
}

}  // namespace Vastel_Connect

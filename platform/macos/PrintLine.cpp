#include <unistd.h>

#include <string>

#include "platform/Platform.h"
#include "platform/posix/WriteText.h"

namespace Vastel_Connect::platform {

void printLine(std::string_view line) {
  writeText(STDOUT_FILENO, std::string(line).append("\n"));
}

}  // namespace Vastel_Connect::platform

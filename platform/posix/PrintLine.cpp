#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "platform/Platform.h"

namespace Vastel_Connect::platform {

void printLine(std::string_view line) {
  const std::string text = std::string(line).append("\n");
  // One write, unless the reader takes less at a time.
  for (std::string_view rest = text; !rest.empty();) {
    const ssize_t written = ::write(STDOUT_FILENO, rest.data(), rest.size());
    if (written >= 0) {
      rest.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      pollfd reader{.fd = STDOUT_FILENO, .events = POLLOUT, .revents = 0};
      ::poll(&reader, 1, -1);
    } else if (errno != EINTR) {
      return;
    }
  }
}

}  // namespace Vastel_Connect::platform

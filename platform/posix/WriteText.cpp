#include "platform/posix/WriteText.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace Vastel_Connect {

std::size_t writeText(int descriptor, std::string_view text) {
  std::string_view rest = text;
  while (!rest.empty()) {
    const ssize_t written = ::write(descriptor, rest.data(), rest.size());
    if (written >= 0) {
      rest.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      pollfd reader{};
      reader.fd = descriptor;
      reader.events = POLLOUT;
      ::poll(&reader, 1, -1);
    } else if (errno != EINTR) {
      break;
    }
  }
  return text.size() - rest.size();
}

}  // namespace Vastel_Connect

// Standard output. Whoever reads it may be stuck, which must not keep the program from ending.
#include <fcntl.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <string>

#include "platform/Platform.h"
#include "platform/linux/Host.h"

namespace Vastel_Connect::platform {
namespace {

/// A reader that takes nothing for so long after a signal to end is stuck.
constexpr int kLastWaitMilliseconds = 200;

void waitForReaderOrSignal(pollfd& reader) {
  // Held back for the event loop, which is not here to notice.
  sigset_t set;
  sigemptyset(&set);
  for (const int number : kEndingSignals) sigaddset(&set, number);
  const int signals = ::signalfd(-1, &set, SFD_CLOEXEC);
  std::array<pollfd, 2> events{reader, {.fd = signals, .events = POLLIN, .revents = 0}};
  while (::poll(events.data(), events.size(), -1) < 0 && errno == EINTR) {
  }
  ::close(signals);
  reader = events.front();
}

/// Standard output in a form that does not block. Whether a descriptor blocks is shared with all
/// who have it, so a pipe or a terminal is opened once more, and a socket is asked each time.
class Output {
 public:
  Output() {
    struct stat status {};
    ::fstat(STDOUT_FILENO, &status);
    isSocket_ = S_ISSOCK(status.st_mode);
    // A file never blocks, and has its place in it from whoever opened it.
    if (S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode)) {
      const int own = ::open("/proc/self/fd/1", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
      if (own >= 0) descriptor_ = own;
    }
  }

  [[nodiscard]] ssize_t write(std::string_view text) const {
    if (isSocket_) return ::send(descriptor_, text.data(), text.size(), MSG_DONTWAIT);
    return ::write(descriptor_, text.data(), text.size());
  }

  /// Waits until more can be written. False: the program is to end, and the reader takes nothing.
  /// Nothing is written from then on, as it would follow a line that may have broken off.
  [[nodiscard]] bool waitForReader() {
    pollfd reader{.fd = descriptor_, .events = POLLOUT, .revents = 0};
    if (!host().terminating) waitForReaderOrSignal(reader);
    if (reader.revents == 0) ::poll(&reader, 1, kLastWaitMilliseconds);
    if (reader.revents == 0) descriptor_ = -1;
    return reader.revents != 0;
  }

 private:
  std::atomic<int> descriptor_ = STDOUT_FILENO;
  bool isSocket_ = false;
};

}  // namespace

void printLine(std::string_view line) {
  static Output output;
  const std::string text = std::string(line).append("\n");
  // One write, but for a reader that takes less at a time.
  for (std::string_view rest = text; !rest.empty();) {
    const ssize_t written = output.write(rest);
    if (written >= 0) {
      rest.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      if (!output.waitForReader()) return;
    } else if (errno != EINTR) {
      return;
    }
  }
}

}  // namespace Vastel_Connect::platform

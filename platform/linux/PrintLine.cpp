// Standard output. Whoever reads it may be stuck, which must not keep the program from ending.
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <mutex>
#include <string>

#include "platform/Platform.h"
#include "platform/linux/Host.h"

namespace Vastel_Connect::platform {
namespace {

/// A reader that does not take the rest of a line so soon after a signal to end is stuck.
constexpr unsigned kLastWaitSeconds = 1;

void onEndingSignal(int number) {
  host().output.endingSignal = number;
  ::alarm(kLastWaitSeconds);
}

/// Breaks off what is being written, or about to be. Nothing follows it.
void onAlarm(int /*number*/) {
  ::dup2(host().output.nullDevice, STDOUT_FILENO);
}

/// A write that the signal finds waiting returns.
void handle(int number, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  ::sigaction(number, &action, nullptr);
}

void prepare() {
  host().output.nullDevice = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  for (const int number : kEndingSignals) {
    if (::sigismember(&host().endingSignals, number) == 1) handle(number, onEndingSignal);
  }
  handle(SIGALRM, onAlarm);
  sigset_t alarm;
  sigemptyset(&alarm);
  sigaddset(&alarm, SIGALRM);
  ::pthread_sigmask(SIG_UNBLOCK, &alarm, nullptr);
}

/// While it lives, a signal to end is not left to the event loop, which is not here to notice. How
/// a descriptor blocks is shared with all who have it, and so is not for us to change: a write that
/// waits for its reader is ended by a signal handler.
class InterruptibleWriting {
 public:
  InterruptibleWriting() {
    if (host().terminating) ::alarm(kLastWaitSeconds);
    ::pthread_sigmask(SIG_UNBLOCK, &host().endingSignals, nullptr);
  }
  ~InterruptibleWriting() {
    ::pthread_sigmask(SIG_BLOCK, &host().endingSignals, nullptr);
    const int signal = host().output.endingSignal;
    if (host().terminating || signal != 0) ::alarm(0);
    if (signal != 0) ::kill(::getpid(), signal);  // Now for the event loop.
  }
  InterruptibleWriting(const InterruptibleWriting&) = delete;
  InterruptibleWriting& operator=(const InterruptibleWriting&) = delete;
};

}  // namespace

void printLine(std::string_view line) {
  Output& output = host().output;
  std::call_once(output.prepared, prepare);
  const std::string text = std::string(output.isBrokenOff ? "\n" : "").append(line).append("\n");
  const InterruptibleWriting writing;
  // One write, unless the reader takes less at a time.
  for (std::string_view rest = text; !rest.empty();) {
    const ssize_t written = ::write(STDOUT_FILENO, rest.data(), rest.size());
    if (written >= 0) {
      rest.remove_prefix(static_cast<std::size_t>(written));
      output.isBrokenOff = !rest.empty();
    } else if (errno == EAGAIN) {
      pollfd reader{};
      reader.fd = STDOUT_FILENO;
      reader.events = POLLOUT;
      ::poll(&reader, 1, -1);
    } else if (errno != EINTR) {
      return;  // Such as a full disk, which may have room for the next line.
    }
  }
}

}  // namespace Vastel_Connect::platform

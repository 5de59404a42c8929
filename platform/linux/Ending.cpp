#include "platform/linux/Ending.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>

namespace Vastel_Connect {
namespace {

constexpr std::array kEndingSignals = {SIGINT, SIGTERM, SIGHUP};

/// What a wait has whose time is used up by others: enough for whoever is not stuck.
constexpr timeval kLeast = {.tv_sec = 0, .tv_usec = 100'000};

constexpr int kNobody = -1;

/// What the signal handlers share with the rest.
struct State {
  std::atomic<bool> isEnding = false;
  /// The end was asked for by SIGINT or SIGTERM.
  std::atomic<bool> isSignalled = false;
  /// The descriptor of the LimitedWait that lives, or kNobody.
  std::atomic<int> waitsFor = kNobody;
  /// Its time is over.
  std::atomic<bool> isOver = false;
  /// What is left for all waits together.
  timeval left = {.tv_sec = 1, .tv_usec = 0};
  /// Takes the place of a reader that is stuck.
  int nullDevice = -1;
} state;

static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

void startTimer() {
  const itimerval timer = {.it_interval = {}, .it_value = state.left};
  ::setitimer(ITIMER_REAL, &timer, nullptr);
}

void onEndingSignal(int number) {
  state.isEnding = true;
  if (number != SIGHUP && state.isSignalled.exchange(true)) {
    // LCOV_EXCL_START: nothing is counted of a process that a signal ends, as it does in a test.
    ::signal(number, SIG_DFL);
    ::raise(number);  // Ends the process as soon as this handler returns.
    // LCOV_EXCL_STOP
  }
  if (state.waitsFor != kNobody) startTimer();
}

/// An alarm may also be one that nobody here has set.
void onAlarm(int /*number*/) {
  const int descriptor = state.waitsFor;
  if (!state.isEnding || descriptor == kNobody) return;
  state.isOver = true;
  ::dup2(state.nullDevice, descriptor);
}

/// What waits when the signal comes returns from the kernel.
void handle(int number, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  ::sigaction(number, &action, nullptr);
}

bool isIgnored(int number) {
  struct sigaction current = {};
  ::sigaction(number, nullptr, &current);
  return current.sa_handler == SIG_IGN;
}

}  // namespace

void catchEndingSignals() {
  state.nullDevice = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  sigset_t handled;
  sigemptyset(&handled);
  sigaddset(&handled, SIGALRM);
  handle(SIGALRM, onAlarm);
  for (const int number : kEndingSignals) {
    if (isIgnored(number)) continue;
    handle(number, onEndingSignal);
    sigaddset(&handled, number);
  }
  // What is blocked at the start stays blocked in a program.
  ::pthread_sigmask(SIG_UNBLOCK, &handled, nullptr);
}

bool isEnding() {
  return state.isEnding;
}

void beginEnding() {
  state.isEnding = true;
}

bool waitForDescriptor(int descriptor, short events, std::uint64_t microseconds,
                       bool evenAtTheEnd) {
  sigset_t ending;
  sigemptyset(&ending);
  for (const int number : kEndingSignals) sigaddset(&ending, number);
  // A signal that comes before the wait would not be noticed by it.
  sigset_t before;
  ::pthread_sigmask(SIG_BLOCK, &ending, &before);
  int ready = 1;
  if (evenAtTheEnd || !isEnding()) {
    pollfd awaited{};
    awaited.fd = descriptor;
    awaited.events = events;
    timespec limit{};
    limit.tv_sec = static_cast<time_t>(microseconds / 1'000'000);
    limit.tv_nsec = static_cast<long>(microseconds % 1'000'000 * 1'000);
    ready = ::ppoll(&awaited, 1, microseconds == UINT64_MAX ? nullptr : &limit, &before);
  }
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return ready != 0;
}

LimitedWait::LimitedWait(int descriptor) {
  state.isOver = false;
  state.waitsFor = descriptor;
  if (state.isEnding) startTimer();
}

LimitedWait::~LimitedWait() {
  state.waitsFor = kNobody;
  if (!state.isEnding) return;
  itimerval stopped = {};
  const itimerval none = {};
  ::setitimer(ITIMER_REAL, &none, &stopped);
  if (timerisset(&stopped.it_value)) {
    state.left = timercmp(&stopped.it_value, &kLeast, <) ? kLeast : stopped.it_value;
  } else if (state.isOver) {
    state.left = kLeast;
  }
}

}  // namespace Vastel_Connect

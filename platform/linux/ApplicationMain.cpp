// Drives the delegate through its life in the order that the platform keeps: will-finish, launch
// links, did-finish, links, will-terminate.
#include "platform/linux/ApplicationMain.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <optional>

#include "app/AppDelegate.h"
#include "platform/linux/HandOver.h"
#include "platform/linux/Host.h"
#include "platform/linux/LaunchArguments.h"
#include "platform/linux/SessionBus.h"
#include "platform/linux/Spawn.h"

namespace Vastel_Connect {
namespace {

/// Losing the race for the name means that somebody is there to take the links, who may end just
/// then; with this many lost races in a row, something is broken.
constexpr int kNameRaces = 100;

/// A descriptor that was closed at the start would be given to the bus, and printed into.
void openMissingStandardStreams() {
  while (true) {
    const int descriptor = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    if (descriptor > STDERR_FILENO) ::close(descriptor);
    if (descriptor < 0 || descriptor > STDERR_FILENO) return;
  }
}

/// The bus and the service manager tell the programs that they start about themselves and the unit.
/// That is not for our children.
void forgetStarter() {
  for (const char* name :
       {"DBUS_STARTER_ADDRESS", "DBUS_STARTER_BUS_TYPE", "INVOCATION_ID", "JOURNAL_STREAM",
        "LISTEN_FDNAMES", "LISTEN_FDS", "LISTEN_PID", "LISTEN_PIDFDID", "MANAGERPID",
        "MANAGERPIDFDID", "MEMORY_PRESSURE_WATCH", "MEMORY_PRESSURE_WRITE", "NOTIFY_SOCKET",
        "SYSTEMD_EXEC_PID", "WATCHDOG_PID", "WATCHDOG_USEC"}) {
    ::unsetenv(name);
  }
}

/// Whether the process was started by nohup, or as such.
bool ignoresHangUp() {
  struct sigaction current = {};
  ::sigaction(SIGHUP, nullptr, &current);
  return current.sa_handler == SIG_IGN;
}

/// Makes the event loop, in which the signals that ask a program to end do so in the normal way.
void makeEventLoop() {
  sd_event_new(&host().eventLoop);
  for (const int number : kEndingSignals) {
    if (number == SIGHUP && ignoresHangUp()) continue;
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, number);
    ::sigprocmask(SIG_BLOCK, &signals, nullptr);
    if (sd_event_add_signal(host().eventLoop, nullptr, number, nullptr, nullptr) < 0) {
      ::sigprocmask(SIG_UNBLOCK, &signals, nullptr);  // It ends the process on the spot then.
      continue;
    }
    sigaddset(&host().endingSignals, number);
  }
}

/// Joins the bus with a request for the name. False when there is no bus.
bool joinBus(NameRequest request) {
  if (!connectSessionBus()) return false;
  const auto isOwner = requestBusName(request);
  if (!isOwner) {
    leaveBus();
    return false;
  }
  if (!*isOwner && request == NameRequest::TakeOver) {
    complain(std::string(kBusName) + " belongs to another program: links arrive when it ends");
  }
  return true;
}

/// Whether the command line asks for a text. It is no delegate that links go to, whose flags are
/// false until they are delivered.
bool endsAfterText() {
  AppDelegate reader;
  reader.parseCommandLine();
  return reader.endsAfterText();
}

/// Gives the links of the command line to the application. Absent when this process is to be the
/// application itself: it has the name then, or there is no bus. Otherwise the exit status.
std::optional<int> giveLinksAway(const std::vector<std::string>& links,
                                 const ActivationToken& token) {
  if (!connectSessionBus()) return std::nullopt;
  for (int race = 0; race < kNameRaces; ++race) {
    switch (handOverLinks(links, token)) {
      case HandOver::Done:
        return EXIT_SUCCESS;
      case HandOver::Refused:
        return EXIT_FAILURE;
      case HandOver::NobodyThere:
        if (requestBusName(NameRequest::IfFree).value_or(false)) return std::nullopt;
    }
  }
  complain("the link was not taken: " + std::string(kBusName) + " changes hands all the time");
  return EXIT_FAILURE;
}

/// Delivers links until something asks the application to end. The result is the exit status.
int waitForLinks() {
  sd_bus_set_exit_on_disconnect(host().bus, 1);
  // The end of the loop is not that of the connection: links that have arrived are still read.
  sd_bus_set_close_on_exit(host().bus, 0);
  // After the signals. The loop reads one before it acts on it; a link that came in between might
  // wait for a stuck reader of its log line, and see no signal any more.
  int status = sd_bus_attach_event(host().bus, host().eventLoop, SD_EVENT_PRIORITY_IDLE);
  if (status >= 0) status = sd_event_loop(host().eventLoop);
  host().terminating = true;
  sd_bus_detach_event(host().bus);
  // Without the loop, a disconnect would end the process on the spot.
  sd_bus_set_exit_on_disconnect(host().bus, 0);
  if (status < 0) complain("the event loop has failed");
  if (status > 0) complain("the session bus is gone");
  return status == EXIT_SUCCESS ? EXIT_SUCCESS : EXIT_FAILURE;
}

/// The application's life. `token` belongs to the links among the arguments.
int runApplication(const LaunchArguments& arguments, const ActivationToken& token) {
  makeEventLoop();
  AppDelegate delegate;
  host().delegate = &delegate;
  delegate.applicationWillFinishLaunching();
  for (const std::string& link : arguments.links) deliverUri(link, token);
  if (arguments.startedByBus && joinBus(NameRequest::Queue)) receiveLaunchLinks();
  delegate.applicationDidFinishLaunching();

  int status = EXIT_SUCCESS;
  if (!host().terminating) {
    if (host().bus != nullptr || joinBus(NameRequest::TakeOver)) {
      status = waitForLinks();
    } else {
      complain("no session bus, so no link can arrive");
      status = EXIT_FAILURE;
    }
  }
  leaveBus();
  delegate.applicationWillTerminate();
  host().delegate = nullptr;
  return status;
}

}  // namespace

int applicationMain(int argc, char** argv) {
  openMissingStandardStreams();
  ::signal(SIGPIPE, SIG_IGN);
  ::signal(SIGXFSZ, SIG_IGN);
  letKernelReapChildren();
  const LaunchArguments arguments = readLaunchArguments(argc, argv);
  host().arguments = arguments.all;
  const ActivationToken token = takeActivationTokenFromEnvironment();
  forgetStarter();

  // With a text to print it is the application for the time of its start, on any desktop: the links
  // are opened, the text is printed, and nobody else is started or disturbed.
  if (arguments.startedWithLink && !endsAfterText()) {
    if (arguments.links.empty()) return EXIT_FAILURE;
    if (const auto status = giveLinksAway(arguments.links, token)) return *status;
  }
  return runApplication(arguments, token);
}

}  // namespace Vastel_Connect

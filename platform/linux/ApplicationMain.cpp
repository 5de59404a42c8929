// Drives the delegate through its life in the order that macOS keeps: will-finish, launch
// links, did-finish, links, will-terminate.
#include "platform/linux/ApplicationMain.h"

#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>

#include "app/AppDelegate.h"
#include "platform/linux/BusCall.h"
#include "platform/linux/Ending.h"
#include "platform/linux/HandOver.h"
#include "platform/linux/Host.h"
#include "platform/linux/LaunchArguments.h"
#include "platform/linux/SessionBus.h"
#include "platform/linux/Spawn.h"

namespace Vastel_Connect {
namespace {

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

/// A link may be as long as it likes, and leaves nothing behind: what is large is a mapping of its
/// own, which goes with it. By default the library would keep the memory of the largest ones.
void giveLargeMemoryBack() {
  ::mallopt(M_MMAP_THRESHOLD, 128 * 1024);
}

/// Whether the command line asks for a text. It is no delegate that links go to, whose flags are
/// false until they are delivered.
bool endsAfterText() {
  AppDelegate reader;
  reader.parseCommandLine();
  return reader.endsAfterText();
}

/// Carries links out. The result is the exit status of a process that has nothing more to do.
int carryOut(const std::vector<std::string>& links, const ActivationToken& token) {
  int status = EXIT_SUCCESS;
  for (const std::string& link : links) {
    if (deliverUri(link, token)) continue;
    complain("a page was not opened");
    status = EXIT_FAILURE;
  }
  return status;
}

/// Delivers links until something asks the application to end. The result is the exit status.
int waitForLinks() {
  const Waited waited = waitForBus([] { return false; }, "");
  beginEnding();
  if (waited == Waited::Ending) return EXIT_SUCCESS;
  complain("the session bus is gone");
  return EXIT_FAILURE;
}

/// Joins the bus to take links. False, which is said on standard error, when none can arrive.
bool joinBus(NameRequest request) {
  if (!connectSessionBus()) {
    complain(kNoBus);
    return false;
  }
  const NameAnswer name = requestBusName(request);
  if (name == NameAnswer::Waiting && request == NameRequest::TakeOver && !isEnding()) {
    complain(std::string(kBusName) + " belongs to another program: links arrive when it ends");
  }
  return name != NameAnswer::None;
}

/// The life of a process that could give its links to nobody.
int liveWithLinks(AppDelegate& delegate, const LaunchArguments& arguments,
                  const ActivationToken& token) {
  const int status = carryOut(arguments.links, token);
  const bool hasBus = host().bus != nullptr;
  // Another process may have become the application meanwhile: then there is nothing left to do.
  if (hasBus && requestBusName(NameRequest::Queue) != NameAnswer::Ours) return status;
  delegate.applicationDidFinishLaunching();
  return hasBus ? waitForLinks() : status;
}

/// The life of a process that was started to take links.
int liveForLinks(AppDelegate& delegate, bool startedByBus) {
  bool hasJoined = startedByBus && joinBus(NameRequest::Queue);
  if (hasJoined) receiveLaunchLinks();
  delegate.applicationDidFinishLaunching();
  if (isEnding()) return EXIT_SUCCESS;
  if (!startedByBus) hasJoined = joinBus(NameRequest::TakeOver);
  return hasJoined ? waitForLinks() : EXIT_FAILURE;
}

/// The application's life. `token` belongs to the links among the arguments.
int runApplication(const LaunchArguments& arguments, const ActivationToken& token) {
  enterHome();
  catchEndingSignals();
  AppDelegate delegate;
  host().delegate = &delegate;
  delegate.applicationWillFinishLaunching();
  const int status = arguments.startedWithLink ? liveWithLinks(delegate, arguments, token)
                                               : liveForLinks(delegate, arguments.startedByBus);
  leaveBus();
  delegate.applicationWillTerminate();
  host().delegate = nullptr;
  return status;
}

int handOverOrRun(int argc, char** argv) {
  const LaunchArguments arguments = readLaunchArguments(argc, argv);
  host().arguments = arguments.all;
  const ActivationToken token = takeActivationTokenFromEnvironment();
  forgetStarter();

  // With a text to print it is the application for the time of its start, on any desktop: the links
  // are opened, the text is printed, and nobody else is started or disturbed.
  if (arguments.startedWithLink && !endsAfterText()) {
    if (arguments.links.empty()) return EXIT_FAILURE;
    const HandOver result =
        connectSessionBus() ? handOverLinks(arguments.links, token) : HandOver::NobodyThere;
    if (result != HandOver::NobodyThere) {
      return result == HandOver::Done ? EXIT_SUCCESS : EXIT_FAILURE;
    }
  }
  return runApplication(arguments, token);
}

}  // namespace

int applicationMain(int argc, char** argv) {
  openMissingStandardStreams();
  leaveNoCore();
  giveLargeMemoryBack();
  ::signal(SIGPIPE, SIG_IGN);
  ::signal(SIGXFSZ, SIG_IGN);
  letKernelReapChildren();
  try {
    return handOverOrRun(argc, argv);
  } catch (const std::exception&) {
    complain("out of memory");
    return EXIT_FAILURE;
  }
}

}  // namespace Vastel_Connect

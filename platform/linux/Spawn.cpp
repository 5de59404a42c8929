#include "platform/linux/Spawn.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <iterator>

#include "platform/linux/Environment.h"

namespace Vastel_Connect {
namespace {

std::vector<char*> pointers(const std::vector<std::string>& texts) {
  std::vector<char*> result;
  std::transform(texts.begin(), texts.end(), std::back_inserter(result),
                 [](const std::string& text) { return const_cast<char*>(text.c_str()); });
  return result;
}

std::vector<std::string> tokenVariables(const ActivationToken& token) {
  // GTK 3 programs send the token of Wayland by the name that X11's has, and by that alone.
  const auto& activationToken = token.activationToken || environmentText("WAYLAND_DISPLAY").empty()
                                    ? token.activationToken
                                    : token.startupId;
  std::vector<std::string> variables;
  if (activationToken) variables.push_back("XDG_ACTIVATION_TOKEN=" + *activationToken);
  if (token.startupId) variables.push_back("DESKTOP_STARTUP_ID=" + *token.startupId);
  return variables;
}

/// The limits of cores: as they were, and while none is to be left.
rlimit foundCoreLimit = {};
rlimit ownCoreLimit = {};

/// While it lives, a child gets the limit that was found.
class FoundCoreLimit {
 public:
  FoundCoreLimit() { ::setrlimit(RLIMIT_CORE, &foundCoreLimit); }
  ~FoundCoreLimit() { ::setrlimit(RLIMIT_CORE, &ownCoreLimit); }
  FoundCoreLimit(const FoundCoreLimit&) = delete;
  FoundCoreLimit& operator=(const FoundCoreLimit&) = delete;
};

/// Whether this process' session has a terminal, which may hang up, or be read by what is started.
bool hasTerminal() {
  const int terminal = ::open("/dev/tty", O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (terminal < 0) return false;
  ::close(terminal);
  return true;
}

/// The attributes and file actions of a program that lives on by itself.
class Detached {
 public:
  Detached() {
    sigset_t none;
    sigemptyset(&none);
    // All, not only SIGPIPE, which this program ignores: whoever started it may ignore others.
    sigset_t all;
    sigfillset(&all);
    posix_spawnattr_init(&attributes_);
    posix_spawnattr_setsigmask(&attributes_, &none);
    posix_spawnattr_setsigdefault(&attributes_, &all);
    // To make a session costs more than all else here.
    const short apart = hasTerminal() ? POSIX_SPAWN_SETSID : POSIX_SPAWN_SETPGROUP;
    posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | apart);
    posix_spawn_file_actions_init(&actions_);
    // One that stays open spares each program the way to it, where there is one.
    const int nullDevice = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      if (posix_spawn_file_actions_adddup2(&actions_, nullDevice, stream) == 0) continue;
      posix_spawn_file_actions_addopen(&actions_, stream, "/dev/null", O_RDWR, 0);
    }
    posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
  }
  ~Detached() {
    posix_spawn_file_actions_destroy(&actions_);
    posix_spawnattr_destroy(&attributes_);
  }
  Detached(const Detached&) = delete;
  Detached& operator=(const Detached&) = delete;

  [[nodiscard]] const posix_spawnattr_t* attributes() const { return &attributes_; }
  [[nodiscard]] const posix_spawn_file_actions_t* actions() const { return &actions_; }

 private:
  posix_spawnattr_t attributes_;
  posix_spawn_file_actions_t actions_;
};

}  // namespace

std::optional<pid_t> spawnProgram(const std::string& program,
                                  const std::vector<std::string>& arguments,
                                  const ActivationToken& token) {
  std::vector<char*> argv = pointers(arguments);
  argv.push_back(nullptr);
  const std::vector<std::string> variables = tokenVariables(token);
  std::vector<char*> environment = pointers(variables);
  for (char* const* variable = environ; *variable != nullptr; ++variable) {
    environment.push_back(*variable);
  }
  environment.push_back(nullptr);

  static const Detached kDetached;
  const FoundCoreLimit cores;
  pid_t child = 0;
  const int error = ::posix_spawn(&child, program.c_str(), kDetached.actions(),
                                  kDetached.attributes(), argv.data(), environment.data());
  if (error != 0) return std::nullopt;
  return child;
}

void enterHome() {
  const std::string home = environmentText("HOME");
  for (const char* folder : {home.c_str(), "/"}) {
    if (*folder == '/' && ::chdir(folder) == 0) return;
  }
}

void leaveNoCore() {
  ::getrlimit(RLIMIT_CORE, &foundCoreLimit);
  ownCoreLimit = foundCoreLimit;
  // Of one byte none is written, nor given to a program that collects cores, as is one of no limit.
  ownCoreLimit.rlim_cur = std::min<rlim_t>(1, foundCoreLimit.rlim_max);
  ::setrlimit(RLIMIT_CORE, &ownCoreLimit);
}

void letKernelReapChildren() {
  struct sigaction action = {};
  // With the default in place of a handler: an ignored SIGCHLD would be inherited by the children.
  action.sa_flags = SA_NOCLDWAIT;
  ::sigaction(SIGCHLD, &action, nullptr);
}

}  // namespace Vastel_Connect

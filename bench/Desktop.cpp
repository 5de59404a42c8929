#include "bench/Desktop.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace Vastel_Connect::bench {
namespace {

constexpr int kOtherEntries = 150;

[[noreturn]] void fail(const std::string& what) {
  std::fprintf(stderr, "bench: %s\n", what.c_str());
  std::exit(1);
}

pid_t startWithOutput(const std::vector<std::string>& arguments, int output) {
  std::vector<char*> argv;
  std::transform(arguments.begin(), arguments.end(), std::back_inserter(argv),
                 [](const std::string& text) { return const_cast<char*>(text.c_str()); });
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  pid_t process = -1;
  if (::posix_spawnp(&process, argv[0], &actions, nullptr, argv.data(), environ) != 0) {
    fail("cannot start " + arguments[0]);
  }
  posix_spawn_file_actions_destroy(&actions);
  return process;
}

}  // namespace

std::int64_t now() {
  timespec time{};
  ::clock_gettime(CLOCK_MONOTONIC, &time);
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

pid_t start(const std::vector<std::string>& arguments) {
  static const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  return startWithOutput(arguments, nowhere);
}

void stop(pid_t process) {
  ::kill(process, SIGTERM);
  ::waitpid(process, nullptr, 0);
}

Desktop::Desktop(const std::string& handlerProgram) {
  char folder[] = "/tmp/vastel-bench-XXXXXX";
  if (::mkdtemp(folder) == nullptr) fail("no temporary folder");
  folder_ = folder;

  channel_ = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
  std::strncpy(address.sun_path, socketPath().c_str(), sizeof address.sun_path - 1);
  if (::bind(channel_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
    fail("no socket");

  for (const char* variable : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"}) {
    ::setenv(variable, folder_.c_str(), 1);
  }
  ::setenv("XDG_CONFIG_DIRS", (folder_ + "/none").c_str(), 1);
  ::setenv("XDG_DATA_DIRS", (folder_ + "/none").c_str(), 1);
  ::unsetenv("XDG_CURRENT_DESKTOP");
  writeEntries(handlerProgram);

  int address_pipe[2];
  if (::pipe2(address_pipe, O_CLOEXEC) != 0) fail("no pipe");
  daemon_ = startWithOutput({"dbus-daemon", "--session", "--nofork", "--nopidfile",
                             "--print-address=1", "--address=unix:path=" + folder_ + "/bus"},
                            address_pipe[1]);
  ::close(address_pipe[1]);
  char line[256] = {};
  if (::read(address_pipe[0], line, sizeof line - 1) <= 0) fail("no bus");
  ::close(address_pipe[0]);
  *std::strchr(line, '\n') = '\0';
  ::setenv("DBUS_SESSION_BUS_ADDRESS", line, 1);
  if (sd_bus_open_user(&bus_) < 0) fail("cannot connect to the bus");
  sd_bus_match_signal(bus_, nullptr, "org.freedesktop.DBus", nullptr, "org.freedesktop.DBus",
                      "NameOwnerChanged", nullptr, nullptr);
}

Desktop::~Desktop() {
  sd_bus_flush_close_unref(bus_);
  stop(daemon_);
  ::close(channel_);
  std::filesystem::remove_all(folder_);
}

void Desktop::writeEntries(const std::string& handlerProgram) const {
  const std::string applications = folder_ + "/applications/";
  std::filesystem::create_directories(applications);
  std::ofstream cache(applications + "mimeinfo.cache");
  cache << "[MIME Cache]\n";
  for (int i = 0; i < kOtherEntries; ++i) {
    const std::string id = "other" + std::to_string(i) + ".desktop";
    std::ofstream(applications + id) << "[Desktop Entry]\nType=Application\nName=Other\n"
                                     << "Exec=/usr/bin/true %U\nMimeType=image/x-" << i << ";\n";
    cache << "image/x-" << i << "=" << id << ";\n";
  }
  cache << "x-scheme-handler/https=browser.desktop;\n";
  std::ofstream(applications + "browser.desktop")
      << "[Desktop Entry]\nType=Application\nName=Browser\nTerminal=false\n"
      << "Exec=" << handlerProgram << " " << socketPath() << " %U\n"
      << "MimeType=x-scheme-handler/https;\n";
}

std::optional<std::int64_t> Desktop::handlerStart() const {
  pollfd waiting{.fd = channel_, .events = POLLIN, .revents = 0};
  std::int64_t time = 0;
  if (::poll(&waiting, 1, 5000) != 1) return std::nullopt;
  if (::recv(channel_, &time, sizeof time, 0) != sizeof time) return std::nullopt;
  return time;
}

std::int64_t Desktop::waitForName(const std::string& name, bool owned) {
  while (true) {
    sd_bus_message* message = nullptr;
    const int result = sd_bus_process(bus_, &message);
    if (result < 0) fail("the bus is gone");
    if (message == nullptr) {
      if (result == 0) sd_bus_wait(bus_, UINT64_MAX);
      continue;
    }
    const char* changed = nullptr;
    const char* newOwner = nullptr;
    const bool isChange =
        sd_bus_message_is_signal(message, "org.freedesktop.DBus", "NameOwnerChanged") > 0 &&
        sd_bus_message_read(message, "sss", &changed, nullptr, &newOwner) >= 0;
    const bool found = isChange && name == changed && (*newOwner != '\0') == owned;
    sd_bus_message_unref(message);
    if (found) return now();
  }
}

}  // namespace Vastel_Connect::bench

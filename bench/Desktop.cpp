#include "bench/Desktop.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "bench/Process.h"

namespace Vastel_Connect::bench {
namespace {

constexpr int kOtherEntries = 150;
constexpr int kTypesOfEach = 8;

}  // namespace

Desktop::Desktop(const std::string& handlerProgram) {
  char folder[] = "/tmp/vastel-bench-XXXXXX";
  if (::mkdtemp(folder) == nullptr) fail("no temporary folder");
  folder_ = folder;

  channel_ = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
  std::strncpy(address.sun_path, socketPath().c_str(), sizeof address.sun_path - 1);
  if (::bind(channel_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
    fail("no socket");
  }
  makeEnvironment();
  writeEntries(handlerProgram);
  startBus();
}

Desktop::~Desktop() {
  sd_bus_flush_close_unref(bus_);
  stop(daemon_);
  ::close(channel_);
  std::filesystem::remove_all(folder_);
}

void Desktop::makeEnvironment() const {
  for (const char* variable : {"HOME", "XDG_RUNTIME_DIR"}) ::setenv(variable, folder_.c_str(), 1);
  for (const char* variable : {"XDG_CONFIG_HOME", "XDG_CONFIG_DIRS", "XDG_DATA_HOME"}) {
    ::setenv(variable, (folder_ + "/" + variable).c_str(), 1);
  }
  ::setenv("XDG_DATA_DIRS", (folder_ + "/share").c_str(), 1);
  for (const char* variable : {"XDG_CURRENT_DESKTOP", "DESKTOP_SESSION", "WAYLAND_DISPLAY"}) {
    ::unsetenv(variable);
  }
  // Plain xdg-open asks for handlers only where there is a display.
  ::setenv("DISPLAY", ":99", 1);
  // GIO at its best: gvfs would start services of its own.
  ::setenv("GIO_USE_VFS", "local", 1);
  ::setenv("GIO_MODULE_DIR", folder_.c_str(), 1);
}

void Desktop::writeEntries(const std::string& handlerProgram) const {
  const std::string applications = folder_ + "/share/applications/";
  std::filesystem::create_directories(applications);
  std::ofstream cache(applications + "mimeinfo.cache");
  cache << "[MIME Cache]\n";
  for (int i = 0; i < kOtherEntries; ++i) {
    const std::string id = "org.example.Other" + std::to_string(i) + ".desktop";
    std::ofstream entry(applications + id);
    entry << "[Desktop Entry]\nType=Application\nName=Other\nExec=/usr/bin/true %U\nMimeType=";
    for (int j = 0; j < kTypesOfEach; ++j) {
      const std::string type = "application/x-" + std::to_string(i) + "-" + std::to_string(j);
      entry << type << ";";
      cache << type << "=" << id << ";\n";
    }
    entry << "\n";
  }
  cache << "x-scheme-handler/https=browser.desktop;\n";
  std::ofstream(applications + "browser.desktop")
      << "[Desktop Entry]\nType=Application\nName=Browser\nTerminal=false\n"
      << "Exec=" << handlerProgram << " " << socketPath() << " %U\n"
      << "MimeType=x-scheme-handler/https;\n";
  const std::string choices = folder_ + "/XDG_CONFIG_HOME";
  std::filesystem::create_directories(choices);
  std::ofstream(choices + "/mimeapps.list")
      << "[Default Applications]\nx-scheme-handler/https=browser.desktop\n";
}

void Desktop::startBus() {
  int addresses[2];
  if (::pipe2(addresses, O_CLOEXEC) != 0) fail("no pipe");
  daemon_ = start({"dbus-daemon", "--session", "--nofork", "--nopidfile", "--nosyslog",
                   "--print-address=1", "--address=unix:path=" + folder_ + "/bus"},
                  addresses[1], addresses[1]);
  ::close(addresses[1]);
  char line[256] = {};
  if (::read(addresses[0], line, sizeof line - 1) <= 0) fail("no bus");
  ::close(addresses[0]);
  line[std::strcspn(line, "\n")] = '\0';
  ::setenv("DBUS_SESSION_BUS_ADDRESS", line, 1);
  if (sd_bus_open_user(&bus_) < 0) fail("cannot connect to the bus");
  sd_bus_match_signal(bus_, nullptr, "org.freedesktop.DBus", nullptr, "org.freedesktop.DBus",
                      "NameOwnerChanged", nullptr, nullptr);
}

std::int64_t Desktop::handlerStart() const {
  pollfd waiting{.fd = channel_, .events = POLLIN, .revents = 0};
  std::int64_t time = 0;
  if (::poll(&waiting, 1, 10'000) != 1 || ::recv(channel_, &time, sizeof time, 0) != sizeof time) {
    fail("no handler was started");
  }
  return time;
}

std::int64_t Desktop::waitForName(const std::string& name, bool owned) {
  while (true) {
    sd_bus_message* message = nullptr;
    const int result = sd_bus_process(bus_, &message);
    if (result < 0) fail("the bus is gone");
    if (message == nullptr) {
      if (result == 0 && sd_bus_wait(bus_, 10'000'000) == 0) fail(name + " does not come or go");
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

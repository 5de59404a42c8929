#include "bench/Process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iterator>

namespace Vastel_Connect::bench {

std::int64_t now() {
  timespec time{};
  ::clock_gettime(CLOCK_MONOTONIC, &time);
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

void fail(const std::string& what) {
  std::fprintf(stderr, "bench: %s\n", what.c_str());
  std::exit(1);
}

pid_t start(const std::vector<std::string>& arguments) {
  static const int nowhere = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  return start(arguments, nowhere, nowhere);
}

pid_t start(const std::vector<std::string>& arguments, int input, int output) {
  std::vector<char*> argv;
  std::transform(arguments.begin(), arguments.end(), std::back_inserter(argv),
                 [](const std::string& text) { return const_cast<char*>(text.c_str()); });
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  pid_t process = -1;
  if (::posix_spawnp(&process, argv[0], &actions, nullptr, argv.data(), environ) != 0) {
    fail("cannot start " + arguments[0]);
  }
  posix_spawn_file_actions_destroy(&actions);
  return process;
}

void stop(pid_t process) {
  ::kill(process, SIGTERM);
  ::waitpid(process, nullptr, 0);
}

PageOpener::PageOpener(const std::vector<std::string>& arguments) {
  int pages[2];
  int times[2];
  if (::pipe2(pages, O_CLOEXEC) != 0 || ::pipe2(times, O_CLOEXEC) != 0) fail("no pipe");
  process_ = start(arguments, pages[0], times[1]);
  ::close(pages[0]);
  ::close(times[1]);
  pages_ = pages[1];
  times_ = times[0];
}

PageOpener::~PageOpener() {
  ::close(pages_);
  ::close(times_);
  ::waitpid(process_, nullptr, 0);
}

std::int64_t PageOpener::open(const std::string& page) const {
  const std::string line = page + "\n";
  std::int64_t time = 0;
  if (::write(pages_, line.data(), line.size()) < 0 ||
      ::read(times_, &time, sizeof time) != sizeof time) {
    fail("a program that opens pages has ended");
  }
  return time;
}

}  // namespace Vastel_Connect::bench

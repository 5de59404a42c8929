// Tests platform/linux/Spawn.h. What of it a page shows is tested by road/test_handlers.py.
#include "platform/linux/Spawn.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <tuple>

#include "tests/linux/PrivateFolder.h"

namespace Vastel_Connect {
namespace {

/// What a shell script that is started as a handler is writes to its first argument.
std::string outputOf(const std::string& script, const ActivationToken& token = {}) {
  const PrivateFolder folder;
  const auto child = spawnProgram(
      "/bin/sh", {"sh", "-c", "exec >\"$1\"; " + script, "sh", folder.path("out")}, token);
  EXPECT_TRUE(child);
  int status = -1;
  EXPECT_EQ(::waitpid(child.value_or(-1), &status, 0), child);
  EXPECT_EQ(status, 0);
  return folder.read("out");
}

TEST(SpawnProgram, IsAbsentWhenAnArgumentIsTooLongForTheKernel) {
  EXPECT_EQ(spawnProgram("/bin/true", {"true", std::string(1 << 20, 'x')}, {}), std::nullopt);
}

TEST(SpawnProgram, GivesItNoStreamOfOurs) {
  int ours[2];
  ASSERT_EQ(::pipe(ours), 0);
  const int input = ::dup(STDIN_FILENO);
  ::dup2(ours[0], STDIN_FILENO);
  EXPECT_EQ(outputOf("readlink /proc/$$/fd/0 /proc/$$/fd/2"), "/dev/null\n/dev/null\n");
  ::dup2(input, STDIN_FILENO);
  for (const int descriptor : {input, ours[0], ours[1]}) ::close(descriptor);
}

TEST(SpawnProgram, GivesItNoStreamOfOursWhereNoDescriptorIsLeft) {
  const PrivateFolder folder;
  rlimit found{};
  ::getrlimit(RLIMIT_NOFILE, &found);
  const int last = ::dup(STDIN_FILENO);
  const rlimit none = {.rlim_cur = static_cast<rlim_t>(last) + 1, .rlim_max = found.rlim_max};
  ::setrlimit(RLIMIT_NOFILE, &none);
  // A copy of the link that stands for its stream.
  const auto child =
      spawnProgram("/bin/cp", {"cp", "-P", "/proc/self/fd/2", folder.path("stream")}, {});
  ::setrlimit(RLIMIT_NOFILE, &found);
  ::close(last);
  EXPECT_EQ(::waitpid(child.value_or(-1), nullptr, 0), child);
  EXPECT_EQ(std::filesystem::read_symlink(folder.path("stream")), "/dev/null");
}

TEST(SpawnProgram, GivesItAllSignalsWithTheirDefaults) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  ::sigprocmask(SIG_BLOCK, &all, &before);
  const auto oldPipe = ::signal(SIGPIPE, SIG_IGN);
  const auto oldHangUp = ::signal(SIGHUP, SIG_IGN);
  const std::string state = outputOf(
      "for s in PIPE HUP; do sh -c \"kill -$s \\$\\$\"; kill -l $?; done; "
      "exec grep SigBlk /proc/self/status");
  ::signal(SIGHUP, oldHangUp);
  ::signal(SIGPIPE, oldPipe);
  ::sigprocmask(SIG_SETMASK, &before, nullptr);
  EXPECT_EQ(state, "PIPE\nHUP\nSigBlk:\t0000000000000000\n");
}

TEST(EnterHome, EntersTheRootWhereThereIsNoHome) {
  const PrivateFolder folder;
  const std::string file = folder.write("home/file", "");
  const std::string home = folder.path("home");
  for (const auto& [value, start] : {std::pair(std::optional(home), home),
                                     {"home", "/"},
                                     {file, "/"},
                                     {home + "/none", "/"},
                                     {"", "/"},
                                     {std::nullopt, "/"}}) {
    ScopedEnvironment environment;
    environment.set("HOME", value);
    enterHome();
    EXPECT_EQ(std::filesystem::current_path(), start) << value.value_or("(not set)");
  }
}

TEST(SpawnProgram, PassesALoneStartupIdOnByBothNamesOnWayland) {
  const ActivationToken lone{.activationToken = {}, .startupId = "id"};
  const ActivationToken both{.activationToken = "token", .startupId = "id"};
  for (const auto& [display, token, seen] : {std::tuple("wayland-0", lone, "id id\n"),
                                             {"wayland-0", both, "token id\n"},
                                             {"wayland-0", {}, "none none\n"},
                                             {"", lone, "none id\n"}}) {
    const ScopedEnvironment environment("WAYLAND_DISPLAY", display);
    EXPECT_EQ(outputOf("echo \"${XDG_ACTIVATION_TOKEN-none} ${DESKTOP_STARTUP_ID-none}\"", token),
              seen);
  }
}

TEST(LetKernelReapChildren, LeavesNoZombie) {
  letKernelReapChildren();
  const auto child = spawnProgram("/bin/true", {"true"}, {});
  ASSERT_TRUE(child);
  errno = 0;
  EXPECT_EQ(::waitpid(*child, nullptr, 0), -1);
  EXPECT_EQ(errno, ECHILD);
  ::signal(SIGCHLD, SIG_DFL);
}

}  // namespace
}  // namespace Vastel_Connect

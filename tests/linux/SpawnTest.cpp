// Tests platform/linux/Spawn.h.
#include "platform/linux/Spawn.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

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

TEST(SpawnProgram, IsAbsentWhenTheProgramIsMissing) {
  EXPECT_EQ(spawnProgram("/none/program", {"program"}, {}), std::nullopt);
}

TEST(SpawnProgram, IsAbsentWhenAnArgumentIsTooLongForTheKernel) {
  EXPECT_EQ(spawnProgram("/bin/true", {"true", std::string(1 << 20, 'x')}, {}), std::nullopt);
}

TEST(SpawnProgram, HandsArgumentsOnAsTheyAre) {
  const PrivateFolder folder;
  const std::vector<std::string> arguments = {"sh",
                                              "-c",
                                              "for a; do printf '<%s>' \"$a\"; done >\"$0\"",
                                              folder.path("out"),
                                              "a b",
                                              "",
                                              "$(c)",
                                              "'",
                                              "\\",
                                              "*",
                                              "\xff"};
  const auto child = spawnProgram("/bin/sh", arguments, {});
  ASSERT_TRUE(child);
  EXPECT_EQ(::waitpid(*child, nullptr, 0), *child);
  EXPECT_EQ(folder.read("out"), "<a b><><$(c)><'><\\><*><\xff>");
}

TEST(SpawnProgram, GivesItASessionOfItsOwn) {
  EXPECT_EQ(outputOf("test \"$(cut -d' ' -f6 /proc/$$/stat)\" = $$ && echo leads"), "leads\n");
}

TEST(SpawnProgram, GivesItNoStreamOrDescriptorOfOurs) {
  int ours[2];
  ASSERT_EQ(::pipe(ours), 0);
  const int input = ::dup(STDIN_FILENO);
  ::dup2(ours[0], STDIN_FILENO);
  std::string links = "readlink /proc/$$/fd/0 /proc/$$/fd/2";
  for (const int descriptor : {STDERR_FILENO + 1, ours[0], ours[1]}) {
    ::fcntl(descriptor, F_SETFD, 0);
    links += " /proc/$$/fd/" + std::to_string(descriptor);
  }
  EXPECT_EQ(outputOf(links + "; :"), "/dev/null\n/dev/null\n");
  ::dup2(input, STDIN_FILENO);
  for (const int descriptor : {input, ours[0], ours[1]}) ::close(descriptor);
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

TEST(SpawnProgram, StartsItInTheHomeOfItsUser) {
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
    EXPECT_EQ(outputOf("pwd"), start + "\n") << value.value_or("(not set)");
  }
}

/// What a handler sees of a token, where WAYLAND_DISPLAY has this value.
std::string tokenSeen(const ActivationToken& token, const std::optional<std::string>& display) {
  ScopedEnvironment environment;
  environment.set("WAYLAND_DISPLAY", display);
  return outputOf("echo ${XDG_ACTIVATION_TOKEN-none} ${DESKTOP_STARTUP_ID-none}", token);
}

TEST(SpawnProgram, PassesTheTokenOn) {
  for (const auto& display : {std::optional<std::string>(), std::optional<std::string>("wl-0")}) {
    EXPECT_EQ(tokenSeen({.activationToken = "token", .startupId = "id"}, display), "token id\n");
    EXPECT_EQ(tokenSeen({.activationToken = "token", .startupId = {}}, display), "token none\n");
    EXPECT_EQ(tokenSeen({}, display), "none none\n");
  }
}

TEST(SpawnProgram, PassesALoneStartupIdOnByBothNamesOnWayland) {
  const ActivationToken token{.activationToken = {}, .startupId = "id"};
  EXPECT_EQ(tokenSeen(token, "wayland-0"), "id id\n");
  EXPECT_EQ(tokenSeen(token, ""), "none id\n");
  EXPECT_EQ(tokenSeen(token, std::nullopt), "none id\n");
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

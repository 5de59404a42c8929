// Tests what of platform/linux/KeyFile.h no file of a desktop shows: test_handler.py has the rest.
#include "platform/linux/KeyFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Vastel_Connect {
namespace {

TEST(KeyFile, KeepsAShortTextWhenItIsMoved) {
  const auto file = KeyFile::parse("[g]\nk=v\n");
  ASSERT_TRUE(file);
  EXPECT_EQ(file->value("g", "k"), "v");
}

// The first terminal that the leader of a session opens in the usual way may hang it up later.
TEST(KeyFile, MakesNoTerminalItsOwn) {
  const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_EQ(::unlockpt(terminal), 0);
  const std::string path = ::ptsname(terminal);
  const pid_t child = ::fork();
  if (child == 0) {
    ::setsid();
    const bool isRead = KeyFile::read(path).has_value();
    ::_exit(isRead || ::open("/dev/tty", O_RDONLY) >= 0 ? EXIT_FAILURE : EXIT_SUCCESS);
  }
  int status = -1;
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  ::close(terminal);
}

TEST(IsPlainValue, IsTrueForCharactersThatStandForThemselvesEverywhere) {
  std::string plain;
  for (int c = 0; c < 256; ++c) {
    if (isPlainValue(std::string(1, static_cast<char>(c)))) plain += static_cast<char>(c);
  }
  EXPECT_EQ(plain, "%+,-./0123456789:;=@ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz");
}

}  // namespace
}  // namespace Vastel_Connect

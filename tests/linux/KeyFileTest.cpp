// Tests platform/linux/KeyFile.h.
#include "platform/linux/KeyFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/linux/PrivateFolder.h"

namespace Vastel_Connect {
namespace {

class KeyFileOnDisk : public testing::Test {
 protected:
  std::optional<KeyFile> read(std::string_view content) {
    return KeyFile::read(folder.write("file", content));
  }

  /// The value of "key" in "[group]", "none" without one, "refused" when the file is.
  std::string valueIn(std::string_view content) {
    const auto file = read(content);
    return file ? std::string(file->value("group", "key").value_or("none")) : "refused";
  }

  PrivateFolder folder;
};

TEST_F(KeyFileOnDisk, FindsTheValueThatGLibFinds) {
  const struct {
    std::string_view content;
    std::string_view value;
  } rows[] = {
      {"[group]\nkey=value\n", "value"},
      {"[group]\nkey=value", "value"},
      {"[group]\nkey \t= \tvalue", "value"},
      {"[group]\nkey=value \t\n", "value \t"},
      {"[group]\nkey=a=b\n", "a=b"},
      {"[group]\nkey==\n", "="},
      {"[group]\nkey=\n", ""},
      {"[group]\nkey= \n", ""},
      {"[group]\nkey=\\s\xff\n", "\\s\xff"},
      {"\n# comment\n[group]\n#key=no\n\nkey=value\n", "value"},
      {"[group]\nkey=first\nkey=last\n", "last"},
      {"[group]\nkey=first\n[other]\nkey=other\n[group]\nkey=last\n", "last"},
      {"[group]\nkey=value\nkey[de]=Wert\n", "value"},
      {"[group]\nkey=value\n[group]\n", "value"},
      {"[group]\nkeys=value\n", "none"},
      {"[groups]\nkey=value\n", "none"},
      {"[ group]\nkey=value\n", "none"},
      {"[~!]\n~!=x\n[group]\nkey=value\n", "value"},
      {"[other]\nkey=value\n[group]\n", "none"},
      {"# only a comment", "none"},
      {"\n\n", "none"},
      {"", "none"},
  };
  for (const auto& [content, value] : rows) EXPECT_EQ(valueIn(content), value) << content;
}

TEST_F(KeyFileOnDisk, RefusesWhatReadersTakeDifferently) {
  const std::string_view lines[] = {
      "no equals sign", "=value",     " key=value",   "\tkey=value",  "  ",        "key\r",
      "key=value\r",    "[other",     "[other] ",     "[]",           "[o[ther]",  "[o]ther]",
      "[o\tther]",      "[\xc3\xbc]", "k[de=value",   "k[de]y=value", "k[]=value", "k[d]e]=v",
      "k [de]=value",   "k]=value",   "a key=value",  "k\xff=value",  "key=\v",    "key=a\fb",
      "\xef\xbb\xbf",   "[",          "other]=value",
  };
  for (const std::string_view line : lines) {
    EXPECT_EQ(valueIn("[group]\nkey=value\n" + std::string(line) + "\n"), "refused") << line;
  }
  EXPECT_EQ(valueIn("key=before any group\n[group]\nkey=value\n"), "refused");
  EXPECT_EQ(valueIn(std::string_view("[group]\nkey=a\0b\n", 17)), "refused");
}

TEST_F(KeyFileOnDisk, KnowsItsFirstGroup) {
  EXPECT_EQ(read("# comment\n\n[first]\n[group]\nkey=value\n")->firstGroup(), "first");
  EXPECT_EQ(read("# comment\n")->firstGroup(), "");
}

TEST_F(KeyFileOnDisk, HoldsNoKeysWhereThereIsNoFile) {
  for (const std::string_view missing : {"none", "none/file", "file/below"}) {
    folder.write("file", "[group]\nkey=value\n");
    const auto file = KeyFile::read(folder.path(missing));
    ASSERT_TRUE(file) << missing;
    EXPECT_EQ(file->firstGroup(), "");
    EXPECT_EQ(file->value("group", "key"), std::nullopt);
  }
}

TEST_F(KeyFileOnDisk, KeepsItsTextWhenItIsMoved) {
  auto file = read("[g]\nk=v\n");
  const KeyFile moved = std::move(*file);
  EXPECT_EQ(moved.value("g", "k"), "v");
}

// The first terminal that the leader of a session opens in the usual way may hang it up later.
TEST_F(KeyFileOnDisk, MakesNoTerminalItsOwn) {
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

// Tests platform/linux/PagePolicy.h.
#include "platform/linux/PagePolicy.h"

#include <gtest/gtest.h>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/linux/PrivateFolder.h"

namespace Vastel_Connect {
namespace {

class PagePolicy : public testing::Test {
 protected:
  /// Why the file `name` does not permit pages of a scheme; empty when it does.
  std::string objection(std::string_view name = "policy", std::string_view scheme = "https") {
    const std::string path = folder.path(name);
    testing::internal::CaptureStderr();
    const bool permits = permitsPage(path, scheme);
    const std::string said = testing::internal::GetCapturedStderr();
    const std::string start =
        "vastel-connect: the scheme of a page is not permitted by " + path + ": ";
    if (permits) return said;
    if (!said.starts_with(start) || !said.ends_with('\n')) return "wrong: " + said;
    return said.substr(start.size(), said.size() - start.size() - 1);
  }

  PrivateFolder folder;
};

TEST_F(PagePolicy, PermitsTheSchemesOfItsLastListOnly) {
  constexpr std::string_view kLacks = "its Schemes lack https";
  constexpr std::string_view kNoKey = "it has no Schemes in [Pages]";
  constexpr std::string_view kNoKeyFile = "it is no key file";
  std::string longest = "[Pages]\nSchemes=https";
  longest.resize(1 << 20, ';');
  const struct {
    std::string content;
    std::string_view objection;
  } rows[] = {
      {"[Pages]\nSchemes=http;https;mailto;tel;\n", ""},
      {"# comment\n\n[Pages]\nSchemes = HTTPS ; \n[Other]\nSchemes=tel\n", ""},
      {"[Pages]\nSchemes=tel\nSchemes=https\n", ""},
      {"[Pages]\nSchemes=https\nSchemes=tel\n", kLacks},
      {"[Pages]\nSchemes=https\n[Pages]\nSchemes=\n", kLacks},
      {"[Pages]\nSchemes=\n", kLacks},
      {"[Pages]\nSchemes=*\n", kLacks},
      {"[Pages]\nSchemes=\xff\n", kLacks},
      {"[Pages]\nschemes=https\n", kNoKey},
      {"[Pages]\nSchemes[de]=https\n", kNoKey},
      {"[pages]\nSchemes=https\n", kNoKey},
      {"", kNoKey},
      {"Schemes=https\n", kNoKeyFile},
      {"[Pages]\r\nSchemes=https\r\n", kNoKeyFile},
      {"[Pages]\nSchemes=https\nother\n", kNoKeyFile},
      {std::string("[Pages]\nSchemes=https\n\0", 23), kNoKeyFile},
      {longest, ""},
      {longest + ";", "it is larger than 1 MiB"},
  };
  for (const auto& [content, expected] : rows) {
    folder.write("policy", content);
    EXPECT_EQ(objection(), expected) << content.substr(0, 100);
  }
}

TEST_F(PagePolicy, PermitsNothingWhereItCannotBeRead) {
  ASSERT_EQ(::mkfifo(folder.path("fifo").c_str(), 0600), 0);
  folder.write("folder/policy", "[Pages]\nSchemes=https\n");
  const auto link = [this](const char* name, const char* target) {
    std::filesystem::create_symlink(target, folder.path(name));
  };
  link("link", "folder/policy");
  link("to nothing", "none");
  link("loop", "loop");
  link("zero", "/dev/zero");
  for (const char* name : {"link", "none"}) EXPECT_EQ(objection(name), "");
  for (const char* name : {"fifo", "folder", "zero"}) {
    EXPECT_EQ(objection(name), "it is no regular file") << name;
  }
  for (const char* name : {"to nothing", "loop", "folder/policy/below"}) {
    EXPECT_EQ(objection(name), "it cannot be opened") << name;
  }
  ::chmod(folder.path("folder/policy").c_str(), 0);
  constexpr uid_t kNobody = 65534;
  if (::geteuid() == 0) ::setfsuid(kNobody);  // Root may read everything.
  EXPECT_EQ(objection("folder/policy"), "it cannot be opened");
  ::setfsuid(::geteuid());
}

TEST_F(PagePolicy, ShowsTheBeginningOfALongScheme) {
  folder.write("policy", "[Pages]\nSchemes=https\n");
  EXPECT_EQ(objection("policy", std::string(1 << 20, 'x')),
            "its Schemes lack " + std::string(64, 'x'));
}

}  // namespace
}  // namespace Vastel_Connect

// Tests platform/linux/FindProgram.h.
#include "platform/linux/FindProgram.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/linux/PrivateFolder.h"

namespace Vastel_Connect {
namespace {

class FindProgram : public testing::Test {
 protected:
  FindProgram() {
    for (const char* name : {"bin/program", "later/program"}) {
      ::chmod(folder.write(name, "").c_str(), 0700);
    }
    folder.write("bin/plain", "");
    std::filesystem::create_directory(folder.path("bin/folder"));
    environment.set("PATH",
                    folder.path("none") + ":" + folder.path("bin") + ":" + folder.path("later"));
  }

  PrivateFolder folder;
  ScopedEnvironment environment;
};

TEST_F(FindProgram, TakesTheFirstInPathAndAnAbsolutePathAsItIs) {
  EXPECT_EQ(findProgram("program"), folder.path("bin/program"));
  EXPECT_EQ(findProgram(folder.path("later/program")), folder.path("later/program"));
}

TEST_F(FindProgram, IsAbsentForAnythingElse) {
  for (const std::string& name :
       {std::string(), std::string("none"), std::string("plain"), std::string("folder"),
        std::string("bin/program"), std::string("./program"), folder.path("bin/plain"),
        folder.path("bin/folder"), folder.path("none")}) {
    EXPECT_EQ(findProgram(name), std::nullopt) << name;
  }
  environment.set("PATH", std::nullopt);
  EXPECT_EQ(findProgram("program"), std::nullopt);
}

TEST_F(FindProgram, PassesOverRelativeFolders) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder.path("later"));
  environment.set("PATH", ":.:../later:" + folder.path("bin"));
  EXPECT_EQ(findProgram("program"), folder.path("bin/program"));
  environment.set("PATH", ":.:../later:");
  EXPECT_EQ(findProgram("program"), std::nullopt);
  std::filesystem::current_path(before);
}

}  // namespace
}  // namespace Vastel_Connect

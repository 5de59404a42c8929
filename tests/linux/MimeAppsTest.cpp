// Tests what of platform/linux/MimeApps.h no folders of a test show: test_handler.py has the rest.
#include "platform/linux/MimeApps.h"

#include <gtest/gtest.h>

#include "tests/platform/ScopedEnvironment.h"

namespace Vastel_Connect {
namespace {

TEST(FindMimeFolders, AreTheUsualOnesWhereNoneAreNamed) {
  ScopedEnvironment environment("HOME", "/home/user");
  for (const char* name :
       {"XDG_CONFIG_HOME", "XDG_CONFIG_DIRS", "XDG_DATA_HOME", "XDG_DATA_DIRS"}) {
    environment.set(name, std::nullopt);
  }
  const auto folders = findMimeFolders();
  ASSERT_TRUE(folders);
  std::string found;
  for (const auto& [path, holdsEntries] : *folders) found += path + (holdsEntries ? "!\n" : "\n");
  EXPECT_EQ(found,
            "/home/user/.config\n/etc/xdg\n/home/user/.local/share/applications!\n"
            "/usr/local/share/applications!\n/usr/share/applications!\n");
}

}  // namespace
}  // namespace Vastel_Connect

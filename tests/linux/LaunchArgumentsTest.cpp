// Tests platform/linux/LaunchArguments.h.
#include "platform/linux/LaunchArguments.h"

#include <gtest/gtest.h>

namespace Vastel_Connect {
namespace {

LaunchArguments read(std::vector<std::string> arguments) {
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  return readLaunchArguments(static_cast<int>(arguments.size()), argv.data());
}

using Texts = std::vector<std::string>;

TEST(ReadLaunchArguments, TellsLinksFromSwitches) {
  const struct {
    Texts all;
    Texts links;
  } rows[] = {
      {{"program", "-log", "screenpop:a", "path", "", "http://h/"}, {"screenpop:a", "http://h/"}},
      {{"", "s:b", "s:a", "s:b", "-log"}, {"s:b", "s:a", "s:b"}},
      {{"program", "-log", "-help"}, {}},
      {{"screenpop:a"}, {}},
      {{}, {}},
  };
  for (const auto& [all, links] : rows) {
    const LaunchArguments arguments = read(all);
    EXPECT_EQ(arguments.all, all);
    EXPECT_EQ(arguments.links, links) << testing::PrintToString(all);
    EXPECT_EQ(arguments.startedWithLink, !links.empty()) << testing::PrintToString(all);
  }
}

TEST(ReadLaunchArguments, IgnoresWhatIsNotUtf8AndSaysSoOfLinks) {
  testing::internal::CaptureStderr();
  const LaunchArguments arguments =
      read({"program", "screenpop:\xff", "-x\xc3", "screenpop:\xc3\xbc"});
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "vastel-connect: argument 1 is not UTF-8: ignored\n");
  EXPECT_EQ(arguments.all, (Texts{"program", "screenpop:\xc3\xbc"}));
  EXPECT_EQ(arguments.links, (Texts{"screenpop:\xc3\xbc"}));
}

TEST(ReadLaunchArguments, RemembersALinkThatItRefused) {
  testing::internal::CaptureStderr();
  const LaunchArguments arguments = read({"program", "screenpop:\xff"});
  EXPECT_NE(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(arguments.links, Texts());
  EXPECT_TRUE(arguments.startedWithLink);
}

}  // namespace
}  // namespace Vastel_Connect

// Which arguments of the process are links, one a line.
#include "fuzz/Fuzz.h"
#include "fuzz/Reference.h"
#include "platform/linux/LaunchArguments.h"

using namespace Vastel_Connect;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  auto text = fuzz::textOf(data, size);
  std::vector<std::string> arguments = {"program"};
  while (!text.empty()) {
    // An argument ends at the first NUL.
    arguments.emplace_back(std::string(fuzz::takeField(text)).c_str());
  }
  LaunchArguments expected;
  std::vector<char*> argv;
  for (std::string& argument : arguments) {
    const bool valid = reference::isUtf8(argument);
    const bool isLink = !argv.empty() && reference::schemeLength(argument) > 0;
    if (valid) expected.all.push_back(argument);
    if (valid && isLink) expected.links.push_back(argument);
    expected.startedWithLink = expected.startedWithLink || isLink;
    expected.startedByBus = expected.startedByBus || argument == "--dbus-service";
    argv.push_back(argument.data());
  }
  const auto result = readLaunchArguments(static_cast<int>(argv.size()), argv.data());
  fuzz::expect(result.all == expected.all, "all arguments");
  fuzz::expect(result.links == expected.links, "links");
  fuzz::expect(result.startedWithLink == expected.startedWithLink, "startedWithLink");
  fuzz::expect(result.startedByBus == expected.startedByBus, "startedByBus");
  return 0;
}

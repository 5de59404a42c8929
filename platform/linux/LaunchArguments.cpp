#include "platform/linux/LaunchArguments.h"

#include "platform/linux/Host.h"
#include "text/UrlText.h"
#include "text/Utf8.h"

namespace Vastel_Connect {

LaunchArguments readLaunchArguments(int argc, char** argv) {
  LaunchArguments arguments;
  for (int i = 0; i < argc; ++i) {
    const std::string_view argument = argv[i];
    const bool isLink = i > 0 && !urlScheme(argument).empty();
    arguments.startedWithLink |= isLink;
    arguments.startedByBus |= argument == kServiceArgument;
    if (!isUtf8(argument)) {
      if (isLink) complain("argument " + std::to_string(i) + " is not UTF-8: ignored");
      continue;
    }
    arguments.all.emplace_back(argument);
    if (isLink) arguments.links.emplace_back(argument);
  }
  return arguments;
}

}  // namespace Vastel_Connect

#include "platform/linux/LaunchArguments.h"

#include <utf8.h>

#include "platform/linux/Host.h"

namespace Vastel_Connect {
namespace {

bool isLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool isSchemeCharacter(char c) {
  return isLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
}

}  // namespace

std::size_t schemeLength(std::string_view text) {
  if (text.empty() || !isLetter(text.front())) return 0;
  std::size_t length = 1;
  while (length < text.size() && isSchemeCharacter(text[length])) ++length;
  return length < text.size() && text[length] == ':' ? length : 0;
}

LaunchArguments readLaunchArguments(int argc, char** argv) {
  LaunchArguments arguments;
  for (int i = 0; i < argc; ++i) {
    const std::string_view argument = argv[i];
    const bool isLink = i > 0 && schemeLength(argument) > 0;
    arguments.startedWithLink |= isLink;
    arguments.startedByBus |= argument == kServiceArgument;
    if (!utf8::is_valid(argument.begin(), argument.end())) {
      complain("argument " + std::to_string(i) + " is not UTF-8: ignored");
      continue;
    }
    arguments.all.emplace_back(argument);
    if (isLink) arguments.links.emplace_back(argument);
  }
  return arguments;
}

}  // namespace Vastel_Connect

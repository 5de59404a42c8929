#include "platform/linux/Environment.h"

#include <cstdlib>

#include "text/Split.h"

namespace Vastel_Connect {
namespace {

std::vector<std::string> folders(const std::string& user, const std::string& system) {
  std::vector<std::string> result = splitWords(system, ":");
  result.insert(result.begin(), user);
  return result;
}

}  // namespace

std::string environmentText(const char* name, std::string_view fallback) {
  const char* value = std::getenv(name);
  return std::string(value != nullptr && *value != '\0' ? value : fallback);
}

std::vector<std::string> configFolders() {
  return folders(environmentText("XDG_CONFIG_HOME", environmentText("HOME") + "/.config"),
                 environmentText("XDG_CONFIG_DIRS", "/etc/xdg"));
}

std::vector<std::string> dataFolders() {
  return folders(environmentText("XDG_DATA_HOME", environmentText("HOME") + "/.local/share"),
                 environmentText("XDG_DATA_DIRS", "/usr/local/share:/usr/share"));
}

}  // namespace Vastel_Connect

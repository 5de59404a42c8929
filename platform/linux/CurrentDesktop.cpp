#include "platform/linux/CurrentDesktop.h"

#include <algorithm>

#include "platform/linux/Environment.h"
#include "platform/linux/TextFile.h"
#include "text/Ascii.h"
#include "text/Split.h"

namespace Vastel_Connect {
namespace {

/// Whether a file of KDE's settings has the group, or cannot be read. KeyFile takes no groups
/// within groups, which KDE's files are full of; and the group itself may be followed by "[$i]".
bool mayRestrictUrls(const std::string& path) {
  const TextFile file = readTextFile(path);
  if (!file.error.empty()) return !file.isMissing;
  return file.text.find("[KDE URL Restrictions]") != file.text.npos;
}

}  // namespace

std::vector<std::string> currentDesktops() {
  return splitWords(asciiLowerCase(environmentText("XDG_CURRENT_DESKTOP")), ":");
}

bool isKde() {
  const auto desktops = currentDesktops();
  return std::find(desktops.begin(), desktops.end(), "kde") != desktops.end();
}

bool kdeRestrictsUrls() {
  if (!isKde()) return false;
  const auto folders = configFolders();
  return std::any_of(folders.begin(), folders.end(), [](const std::string& folder) {
    return mayRestrictUrls(folder + "/kdeglobals") ||
           mayRestrictUrls(folder + "/system.kdeglobals");
  });
}

}  // namespace Vastel_Connect

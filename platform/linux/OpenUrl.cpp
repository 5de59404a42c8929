// Opening a page: by its default handler directly, or by an opener of the desktop's.
#include <algorithm>
#include <string>
#include <vector>

#include "platform/Platform.h"
#include "platform/linux/DefaultHandler.h"
#include "platform/linux/Host.h"
#include "platform/linux/MimeApps.h"
#include "platform/linux/Scope.h"
#include "platform/linux/Spawn.h"
#include "text/Ascii.h"
#include "text/UrlText.h"

namespace Vastel_Connect::platform {
namespace {

bool start(const std::string& application, const std::string& program,
           const std::vector<std::string>& arguments) {
  const auto child = spawnProgram(program, arguments, host().token);
  if (child) startScope(*child, application);
  return child.has_value();
}

/// Starts the first of the openers that is there.
bool startOpener(const std::string& url) {
  std::vector<std::vector<std::string>> openers = {{"gio", "open", url}, {"xdg-open", url}};
  // By its name: xdg-open does not know each version of KDE, and then opens nothing.
  if (isKde()) openers.insert(openers.begin(), {{"kde-open", url}, {"kde-open5", url}});
  return std::any_of(openers.begin(), openers.end(), [](const auto& opener) {
    const auto program = findProgram(opener.front());
    return program && start(opener.front(), *program, opener);
  });
}

}  // namespace

bool openUrl(std::string_view page) {
  const std::string url = urlText(page);
  const std::string scheme = asciiLowerCase(urlScheme(url));
  if (const auto handler = findDefaultHandler(scheme, url)) {
    return start(handler->application, handler->program, handler->arguments);
  }
  return startOpener(url);
}

}  // namespace Vastel_Connect::platform

// Opening a page: by its default handler directly, or by an opener of the desktop's.
#include <array>
#include <string>

#include "platform/Platform.h"
#include "platform/linux/DefaultHandler.h"
#include "platform/linux/Host.h"
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

bool startOpener(const std::vector<std::string>& arguments) {
  const auto program = findProgram(arguments.front());
  return program && start(arguments.front(), *program, arguments);
}

}  // namespace

bool openUrl(std::string_view url) {
  const std::string scheme = asciiLowerCase(urlScheme(url));
  if (const auto handler = findDefaultHandler(scheme, url)) {
    return start(handler->application, handler->program, handler->arguments);
  }
  const std::string text(url);
  const std::vector<std::string> gio = {"gio", "open", text};
  const std::vector<std::string> xdg = {"xdg-open", text};
  return desktopHasOwnBrowserChoice(scheme) ? startOpener(xdg) || startOpener(gio)
                                            : startOpener(gio) || startOpener(xdg);
}

}  // namespace Vastel_Connect::platform

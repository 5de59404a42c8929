// Opening a page: by its default handler directly, or by an opener of the desktop's.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "platform/Platform.h"
#include "platform/linux/CurrentDesktop.h"
#include "platform/linux/DefaultHandler.h"
#include "platform/linux/FindProgram.h"
#include "platform/linux/Host.h"
#include "platform/linux/PagePolicy.h"
#include "platform/linux/Scope.h"
#include "platform/linux/Spawn.h"
#include "text/Ascii.h"
#include "text/UrlText.h"

namespace Vastel_Connect::platform {
namespace {

/// A program's name, and its arguments.
using Command = std::vector<std::string>;

bool start(const std::string& application, const std::string& program, const Command& arguments) {
  const auto child = spawnProgram(program, arguments, host().token);
  if (child) startScope(*child, application);
  return child.has_value();
}

/// The openers to be tried for a URL, best first.
std::vector<Command> openersFor(const std::string& scheme, const std::string& url) {
  const Command gio = {"gio", "open", url};
  // By its name: xdg-open does not know each version of KDE, and then opens nothing.
  std::vector<Command> kde = {{"kde-open", url}, {"kde-open5", url}};
  if (scheme == "file") {
    // gio opens a file by its type. Others run the program of a local desktop entry, or follow the
    // URL in it, which may be the link whose page it is: that would go on for ever.
    return kdeRestrictsUrls() ? std::vector<Command>() : std::vector<Command>{gio};
  }
  if (kdeRestrictsUrls()) return kde;
  std::vector<Command> openers = isKde() ? std::move(kde) : std::vector<Command>();
  openers.insert(openers.end(), {gio, {"xdg-open", url}});
  return openers;
}

bool startOpener(const Command& opener) {
  const auto program = findProgram(opener.front());
  return program && start(opener.front(), *program, opener);
}

bool openPage(const std::string& url) {
  const std::string scheme = asciiLowerCase(urlScheme(url));
  if (!permitsPage(kPagePolicy, scheme)) return false;
  const auto handler = findDefaultHandler(scheme, url);
  // The kernel may refuse what a desktop would start, as a script without "#!".
  if (handler && start(handler->application, handler->program, handler->arguments)) return true;
  const auto openers = openersFor(scheme, url);
  return std::any_of(openers.begin(), openers.end(), startOpener);
}

}  // namespace

bool openUrl(std::string_view page) {
  const bool isOpened = openPage(urlText(page));
  host().hasFailed = !isOpened;
  return isOpened;
}

}  // namespace Vastel_Connect::platform

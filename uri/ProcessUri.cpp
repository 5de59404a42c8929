// The road of one URI, from its text to the opened page.
#include <string>

#include "api/ScreenPopApi.h"
#include "app/AppDelegate.h"
#include "platform/Platform.h"
#include "text/Ascii.h"
#include "text/UrlText.h"
#include "uri/UriPreProcessor.h"

namespace Vastel_Connect {
namespace {

/// Lower-cases ASCII only, which decides as a full Unicode mapping does: outside ASCII, only U+212A
/// and U+0130 map to letters of ASCII, and neither "k" nor "i" stands in "screenpop".
bool isScreenPop(std::string_view uriProtocol) {
  return asciiLowerCase(uriProtocol) == "screenpop";
}

}  // namespace

void AppDelegate::processUri(std::string_view uri) const {
  logMessage("process uri: ", uri);
  struct_UriPreProcessor preProcessor;
  preProcessor.parseUri(uri);
  preProcessor.decodeCommand();

  // Two spellings, on purpose: by the small "i", a reader of the log knows that there was no
  // protocol.
  if (!preProcessor.UriProtocol) return logMessage("invalid protocol");
  if (!isScreenPop(*preProcessor.UriProtocol)) return logMessage("Invalid protocol");

  logMessage("process screenpop");
  if (!preProcessor.DecodedCommand) return logMessage("Could not decode");

  const auto request = struct_PartialScreenPopApi::fromJsonText(*preProcessor.DecodedCommand);
  // Whatever ScriptType says, on purpose: it and the other members are for the client's scripts.
  if (!request.WebPage) return logMessage("no webpage to open");

  logMessage("webpage: ", *request.WebPage);
  // Without a scheme nobody can open it: an opener would take a bare word for a file or an option.
  if (formsUrl(*request.WebPage) && !urlScheme(*request.WebPage).empty()) {
    platform::openUrl(*request.WebPage);
  }
}

}  // namespace Vastel_Connect

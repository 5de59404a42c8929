#include "uri/UriPreProcessor.h"

#include <utility>

#include "text/Base64.h"
#include "text/Utf8.h"

namespace Vastel_Connect {

void struct_UriPreProcessor::parseUri(std::string_view uri) {
  const auto colon = uri.find(':');
  if (colon == uri.npos) return;
  UriProtocol = uri.substr(0, colon);
  uri.remove_prefix(colon);
  // One separator only: whatever ":" and "/" follow it belong to the command.
  uri.remove_prefix(uri.starts_with("://") ? 3 : 1);
  RawCommand = uri;
}

void struct_UriPreProcessor::decodeCommand() {
  if (!RawCommand || RawCommand->empty()) return;
  auto bytes = decodeBase64(*RawCommand);
  if (bytes && isUtf8(*bytes)) DecodedCommand = std::move(bytes);
}

}  // namespace Vastel_Connect

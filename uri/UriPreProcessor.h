#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Vastel_Connect {

/// Takes one URI apart. It judges nothing and never fails: what it could not work out is absent,
/// which is not the same as an empty text.
///
/// Calling order: parseUri with the URI, decodeCommand, then read the members.
struct struct_UriPreProcessor {
  /// The text before the first ":", as received.
  std::optional<std::string> UriProtocol;
  /// The text behind the separator, which is "://" or a lone ":", as received.
  std::optional<std::string> RawCommand;
  /// `RawCommand` decoded as strict base64 and then UTF-8; absent when it is neither, or empty.
  std::optional<std::string> DecodedCommand;

  /// Fills `UriProtocol` and `RawCommand`; neither when the URI has no ":".
  void parseUri(std::string_view uri);

  /// Fills `DecodedCommand` from `RawCommand`.
  void decodeCommand();
};

}  // namespace Vastel_Connect

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
  /// The text whose UTF-8 `RawCommand` is the strict base64 of; absent when there is none: the
  /// command is absent, empty or no base64, or what it decodes to is no UTF-8.
  std::optional<std::string> DecodedCommand;

  /// Fills `UriProtocol` and `RawCommand`; neither when the URI has no ":".
  void parseUri(std::string_view uri);

  /// Fills `DecodedCommand` from `RawCommand`.
  void decodeCommand();
};

}  // namespace Vastel_Connect

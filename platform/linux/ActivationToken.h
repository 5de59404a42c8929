#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Vastel_Connect {

/// What lets the handler's window come to the front: it is passed from whoever followed a link on
/// to the page's handler. Both texts come from outside and are used only when they are printable
/// ASCII of at most kTokenLengthLimit characters.
struct ActivationToken {
  /// XDG_ACTIVATION_TOKEN, "activation-token" on the bus.
  std::optional<std::string> activationToken;
  /// DESKTOP_STARTUP_ID, "desktop-startup-id" on the bus.
  std::optional<std::string> startupId;
};

inline constexpr std::size_t kTokenLengthLimit = 1024;

/// `text` as a token's text; absent when it is empty, too long, or not printable ASCII.
[[nodiscard]] std::optional<std::string> tokenText(std::string_view text);

/// Takes the token with which this process was started out of the environment, where a later child
/// would find it stale.
[[nodiscard]] ActivationToken takeActivationTokenFromEnvironment();

}  // namespace Vastel_Connect

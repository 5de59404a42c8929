#include "platform/linux/ActivationToken.h"

#include <algorithm>
#include <cstdlib>

namespace Vastel_Connect {
namespace {

std::optional<std::string> takeTokenText(const char* variable) {
  const char* value = std::getenv(variable);
  auto text = value != nullptr ? tokenText(value) : std::nullopt;
  ::unsetenv(variable);
  return text;
}

}  // namespace

std::optional<std::string> tokenText(std::string_view text) {
  const bool printable =
      std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c <= '~'; });
  if (text.empty() || text.size() > kTokenLengthLimit || !printable) return std::nullopt;
  return std::string(text);
}

ActivationToken takeActivationTokenFromEnvironment() {
  return {.activationToken = takeTokenText("XDG_ACTIVATION_TOKEN"),
          .startupId = takeTokenText("DESKTOP_STARTUP_ID")};
}

}  // namespace Vastel_Connect

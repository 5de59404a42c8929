#pragma once

#include <string>
#include <vector>

#include "platform/linux/ActivationToken.h"

namespace Vastel_Connect {

enum class HandOver {
  /// The application has the links, or had them when it ended.
  Done,
  /// There is no application, and the bus cannot start one, or is gone before anything was sent:
  /// this process is to be it.
  NobodyThere,
  /// The bus does not carry the links, somebody has the application's name and does not take them,
  /// or no answer comes any more. Said on standard error.
  Refused,
};

/// Hands `links` to the application over the bus, which starts it where need be. Waits for the
/// answer that they arrived, however long the application is busy, and says so on standard error
/// when it takes seconds. They are sent again only when the process that was asked has left the bus
/// without an answer.
[[nodiscard]] HandOver handOverLinks(const std::vector<std::string>& links,
                                     const ActivationToken& token);

}  // namespace Vastel_Connect

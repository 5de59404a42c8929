#pragma once

#include <string>
#include <vector>

#include "platform/linux/ActivationToken.h"

namespace Vastel_Connect {

enum class HandOver {
  /// The application has the links, or had them when it ended.
  Done,
  /// There is no application, and the bus cannot start one: this process is to be it.
  NobodyThere,
  /// The bus does not carry the links, somebody has the application's name and does not take them,
  /// or the bus went away before an answer came. Said on standard error.
  Refused,
};

/// Hands `links` to the application over the bus, which starts it where need be. Waits for the
/// answer that they arrived, however long the application is busy, and says so on standard error
/// when it takes seconds.
[[nodiscard]] HandOver handOverLinks(const std::vector<std::string>& links,
                                     const ActivationToken& token);

}  // namespace Vastel_Connect

#pragma once

#include <cstddef>
#include <string_view>

namespace Vastel_Connect {

/// Writes `text` in one piece where the descriptor takes it so, and waits for its reader otherwise,
/// also where the descriptor does not block. The result is how much was written before an error,
/// such as a full disk: all of it, as a rule. A signal handler does not end it.
std::size_t writeText(int descriptor, std::string_view text);

}  // namespace Vastel_Connect

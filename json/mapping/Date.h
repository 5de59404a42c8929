#pragma once

#include <chrono>

namespace Vastel_Connect {

/// A point in time, to the second: no pattern of a DateFormatter writes a smaller unit.
using Date = std::chrono::sys_seconds;

}  // namespace Vastel_Connect

#pragma once

#include <chrono>
#include <optional>

#include "json/mapping/Date.h"

namespace Vastel_Connect {

/// How far the clocks of the process's default time zone (TZ, else the system's) are ahead of UTC
/// at `date`, in whole minutes: an offset with seconds, as they were before time zones, is rounded.
[[nodiscard]] std::chrono::minutes defaultZoneOffset(Date date);

/// When the clocks of the default zone show `local`. Absent for a time that they skip. Of a time
/// that they show twice the second counts.
[[nodiscard]] std::optional<Date> dateInDefaultZone(std::chrono::local_seconds local);

}  // namespace Vastel_Connect

#pragma once

#include <cstdint>
#include <optional>

#include "json/mapping/Date.h"

namespace Vastel_Connect {

/// The seconds from 1970 to a date, which a failed test can print: Apple's standard library prints
/// dates from macOS 13.3 on only.
inline std::optional<std::int64_t> unixTime(std::optional<Date> date) {
  if (!date) return std::nullopt;
  return date->time_since_epoch().count();
}

}  // namespace Vastel_Connect

#include "json/mapping/DefaultZone.h"

#include <cmath>
#include <ctime>

namespace Vastel_Connect {

std::chrono::minutes defaultZoneOffset(Date date) {
  const std::time_t time = date.time_since_epoch().count();
  ::tzset();  // The zone may have changed since the last call.
  std::tm local{};
  if (::localtime_r(&time, &local) == nullptr) return {};
  return std::chrono::minutes(std::lround(static_cast<double>(local.tm_gmtoff) / 60));
}

std::optional<Date> dateInDefaultZone(std::chrono::local_seconds local) {
  const Date asUtc(local.time_since_epoch());
  // The clocks change at most once within these days, so one of their two offsets holds at `local`.
  for (const auto day : {std::chrono::days(1), std::chrono::days(-1)}) {
    const auto offset = defaultZoneOffset(asUtc + day);
    const Date date = asUtc - offset;
    if (defaultZoneOffset(date) == offset) return date;
  }
  return std::nullopt;
}

}  // namespace Vastel_Connect

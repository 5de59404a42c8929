#pragma once

#include <cstdint>
#include <limits>
#include <optional>

#include "json/Json.h"

namespace Vastel_Connect {

/// One more than the largest value of an integer type. It always is a double, as the largest value
/// itself may not be.
template <typename Integer>
constexpr double rangeEnd() {
  constexpr Integer kHalf = std::numeric_limits<Integer>::max() / 2 + 1;
  return 2.0 * static_cast<double>(kHalf);
}

/// The number that `value` is, if the type holds exactly that number; else absent. JSON has one
/// kind of number: 2 and 2.0 are the same. A boolean is no number. The types are std::int64_t,
/// std::uint64_t and double.
template <typename Number>
[[nodiscard]] std::optional<Number> exactNumber(const JsonValue& value);

template <>
[[nodiscard]] std::optional<std::int64_t> exactNumber(const JsonValue& value);
template <>
[[nodiscard]] std::optional<std::uint64_t> exactNumber(const JsonValue& value);
template <>
[[nodiscard]] std::optional<double> exactNumber(const JsonValue& value);

}  // namespace Vastel_Connect

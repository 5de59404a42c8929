#include "json/ExactNumber.h"

#include <cmath>
#include <utility>

namespace Vastel_Connect {
namespace {

template <typename Integer>
std::optional<Integer> exactFromReal(double real) {
  // The comparisons are false for NaN.
  const bool inRange = real >= static_cast<double>(std::numeric_limits<Integer>::min()) &&
                       real < rangeEnd<Integer>();
  if (!inRange || std::trunc(real) != real) return std::nullopt;
  return static_cast<Integer>(real);
}

template <typename Integer>
std::optional<double> exactFromInteger(Integer integer) {
  const auto real = static_cast<double>(integer);
  return exactFromReal<Integer>(real) == integer ? std::optional(real) : std::nullopt;
}

template <typename To, typename From>
std::optional<To> exactFromOther(From integer) {
  return std::in_range<To>(integer) ? std::optional(static_cast<To>(integer)) : std::nullopt;
}

}  // namespace

template <>
std::optional<std::int64_t> exactNumber(const JsonValue& value) {
  if (const auto* number = value.if_int64()) return *number;
  if (const auto* number = value.if_uint64()) return exactFromOther<std::int64_t>(*number);
  if (const auto* number = value.if_double()) return exactFromReal<std::int64_t>(*number);
  return std::nullopt;
}

template <>
std::optional<std::uint64_t> exactNumber(const JsonValue& value) {
  if (const auto* number = value.if_int64()) return exactFromOther<std::uint64_t>(*number);
  if (const auto* number = value.if_uint64()) return *number;
  if (const auto* number = value.if_double()) return exactFromReal<std::uint64_t>(*number);
  return std::nullopt;
}

template <>
std::optional<double> exactNumber(const JsonValue& value) {
  if (const auto* number = value.if_int64()) return exactFromInteger(*number);
  if (const auto* number = value.if_uint64()) return exactFromInteger(*number);
  if (const auto* number = value.if_double()) return *number;
  return std::nullopt;
}

}  // namespace Vastel_Connect

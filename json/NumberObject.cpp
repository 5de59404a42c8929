#include "json/NumberObject.h"

#include <cmath>
#include <limits>
#include <type_traits>

#include "json/ExactNumber.h"

namespace Vastel_Connect {
namespace {

template <typename Target>
Target nearest(double real) {
  using Limits = std::numeric_limits<Target>;
  if (std::isnan(real)) return 0;
  if (real <= static_cast<double>(Limits::min())) return Limits::min();
  if (real >= rangeEnd<Target>()) return Limits::max();
  return static_cast<Target>(real);
}

template <typename Target, typename Number>
Target convert(const Number& number) {
  return std::visit(
      [](auto value) -> Target {
        if constexpr (std::is_floating_point_v<decltype(value)>) {
          return nearest<Target>(value);
        } else {
          return static_cast<Target>(value);
        }
      },
      number);
}

}  // namespace

std::optional<NumberObject> NumberObject::fromJsonValue(const JsonValue& value) {
  if (const auto* number = value.if_int64()) return NumberObject(*number);
  if (const auto* number = value.if_uint64()) return NumberObject(*number);
  if (const auto* number = value.if_double()) return NumberObject(*number);
  if (const auto* number = value.if_bool()) return NumberObject(*number);
  return std::nullopt;
}

std::int32_t NumberObject::intValue() const {
  return convert<std::int32_t>(value_);
}

std::uint32_t NumberObject::unsignedIntValue() const {
  return convert<std::uint32_t>(value_);
}

std::int64_t NumberObject::longLongValue() const {
  return convert<std::int64_t>(value_);
}

std::uint64_t NumberObject::unsignedLongLongValue() const {
  return convert<std::uint64_t>(value_);
}

JsonValue NumberObject::jsonValue() const {
  return std::visit([](auto value) { return JsonValue(value); }, value_);
}

}  // namespace Vastel_Connect

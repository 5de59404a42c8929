#pragma once

#include <cstdint>
#include <optional>
#include <variant>

#include "json/Json.h"

namespace Vastel_Connect {

/// A number of any of JSON's forms: an integer, a real or a boolean, which counts as 0 or 1. It is
/// read as one of four integer types, whatever its own form:
///
/// - An integer out of the target's range is taken modulo 2^N, as C's conversions between integers
///   do: 2^32 + 5 read as 32 bits is 5, and -1 read as unsigned is the largest value.
/// - A real loses its fraction. C leaves a real out of range undefined; here it becomes the nearest
///   value that the target has, and NaN becomes 0. The result then keeps the sign and the order of
///   the numbers, and is what the processors give that define it.
class NumberObject {
 public:
  explicit NumberObject(std::int32_t value) : value_(std::int64_t{value}) {}
  explicit NumberObject(std::uint32_t value) : value_(std::uint64_t{value}) {}
  explicit NumberObject(std::int64_t value) : value_(value) {}
  explicit NumberObject(std::uint64_t value) : value_(value) {}
  explicit NumberObject(double value) : value_(value) {}
  explicit NumberObject(bool value) : value_(value) {}

  /// The number that `value` is; absent when it is neither a number nor a boolean.
  [[nodiscard]] static std::optional<NumberObject> fromJsonValue(const JsonValue& value);

  [[nodiscard]] std::int32_t intValue() const;
  [[nodiscard]] std::uint32_t unsignedIntValue() const;
  [[nodiscard]] std::int64_t longLongValue() const;
  [[nodiscard]] std::uint64_t unsignedLongLongValue() const;

  /// The number in the form that it was given in.
  [[nodiscard]] JsonValue jsonValue() const;

  bool operator==(const NumberObject&) const = default;

 private:
  std::variant<std::int64_t, std::uint64_t, double, bool> value_;
};

}  // namespace Vastel_Connect

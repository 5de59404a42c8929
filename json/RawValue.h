#pragma once

#include <optional>
#include <type_traits>
#include <utility>

namespace Vastel_Connect {

/// Gives an enumeration its raw values: specialise it with `static constexpr std::pair<Enum, Raw>
/// rows[]`, one row a case in declaration order, where Raw is std::string_view or an integer type.
template <typename Enum>
struct RawValues;

/// An enumeration that has raw values.
template <typename Enum>
concept RawRepresentable = requires {
  RawValues<Enum>::rows->first;
  RawValues<Enum>::rows->second;
};

template <typename Enum>
using RawValueOf = std::remove_cvref_t<decltype(RawValues<Enum>::rows->second)>;

/// The raw value of a case; an empty one for a value that is none.
template <typename Enum>
[[nodiscard]] constexpr RawValueOf<Enum> rawValue(Enum value) {
  for (const auto& [candidate, raw] : RawValues<Enum>::rows) {
    if (candidate == value) return raw;
  }
  return {};
}

/// The case with exactly this raw value; absent when there is none.
template <typename Enum>
[[nodiscard]] constexpr std::optional<Enum> initRawValue(RawValueOf<Enum> raw) {
  for (const auto& [value, candidate] : RawValues<Enum>::rows) {
    if (candidate == raw) return value;
  }
  return std::nullopt;
}

}  // namespace Vastel_Connect

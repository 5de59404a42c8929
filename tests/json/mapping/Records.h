#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "json/Json.h"
#include "json/JsonText.h"
#include "json/RawValue.h"
#include "json/ValueOf.h"

namespace Vastel_Connect {

/// A record with the least that one can have: read from {"n": <integer>}, it has no JSON form when
/// `n` is negative.
struct Small {
  int n = 0;

  static std::optional<Small> fromJson(const JSON& json) {
    const JsonValue* value = json.if_contains("n");
    const auto n = value != nullptr ? valueOf<int>(*value) : std::nullopt;
    return n ? std::optional(Small{*n}) : std::nullopt;
  }
  [[nodiscard]] std::optional<JSON> toJson() const {
    return n < 0 ? std::nullopt : std::optional(JSON{{"n", n}});
  }

  bool operator==(const Small&) const = default;
};

enum class Color { Red, Green };

template <>
struct RawValues<Color> {
  static constexpr std::pair<Color, std::string_view> rows[] = {{Color::Red, "red"},
                                                                {Color::Green, "green"}};
};

enum class Level { Low, High };

template <>
struct RawValues<Level> {
  static constexpr std::pair<Level, int> rows[] = {{Level::Low, 1}, {Level::High, 10}};
};

/// The dictionary that a JSON text stands for.
inline JSON parsed(std::string_view text) {
  return parseJsonText(text)->get_object();
}

}  // namespace Vastel_Connect

#pragma once

#include <concepts>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "json/ArrayTransform.h"
#include "json/ExactNumber.h"
#include "json/Json.h"
#include "json/NumberObject.h"

namespace Vastel_Connect {

/// A dictionary from texts to values of one type.
template <typename T>
using Dictionary = std::map<std::string, T, std::less<>>;

/// Which JSON values are of a C++ type:
///
/// | Type            | Its values                                                    |
/// |-----------------|---------------------------------------------------------------|
/// | bool            | booleans; a number is none                                    |
/// | integer types   | numbers that the type holds exactly; a boolean is no number   |
/// | double          | likewise: 0.1 and 2 are, the integer 2^53 + 1 is not          |
/// | std::string     | strings                                                       |
/// | NumberObject    | numbers and booleans                                          |
/// | JSON, JsonArray | objects, arrays                                               |
/// | JsonValue       | all, null too                                                 |
/// | std::vector<T>  | arrays whose elements all are values of T                     |
/// | Dictionary<T>   | objects whose values all are values of T                      |
///
/// Nothing is converted: the string "2" is no number. A specialisation for a further type gives
/// `read`, the value if it is of the type and else absent, and `write`, the value as it is.
template <typename T>
struct JsonForm;

/// Any type of the table.
template <typename T>
concept JsonType = requires(const JsonValue& json, const T& value) {
  { JsonForm<T>::read(json) } -> std::same_as<std::optional<T>>;
  { JsonForm<T>::write(value) } -> std::same_as<JsonValue>;
};

/// `json` if it is a value of T, else absent.
template <JsonType T>
[[nodiscard]] std::optional<T> valueOf(const JsonValue& json) {
  return JsonForm<T>::read(json);
}

/// The JSON value that `value` is.
template <JsonType T>
[[nodiscard]] JsonValue jsonValueOf(const T& value) {
  return JsonForm<T>::write(value);
}

template <typename T, typename... Types>
concept IsOneOf = (std::same_as<T, Types> || ...);

/// The integer types; neither bool nor the character types are among them.
template <typename T>
concept IntegerType = IsOneOf<T, signed char, unsigned char, short, unsigned short, int, unsigned,
                              long, unsigned long, long long, unsigned long long>;

/// A copy of what the pointer shows; absent when it is null.
template <typename T, typename Held>
[[nodiscard]] std::optional<T> copyOf(const Held* held) {
  return held != nullptr ? std::optional<T>(*held) : std::nullopt;
}

template <>
struct JsonForm<bool> {
  static std::optional<bool> read(const JsonValue& json) { return copyOf<bool>(json.if_bool()); }
  static JsonValue write(bool value) { return value; }
};

template <IntegerType T>
struct JsonForm<T> {
  using Widest = std::conditional_t<std::is_signed_v<T>, std::int64_t, std::uint64_t>;

  static std::optional<T> read(const JsonValue& json) {
    const auto number = exactNumber<Widest>(json);
    if (!number || !std::in_range<T>(*number)) return std::nullopt;
    return static_cast<T>(*number);
  }
  static JsonValue write(T value) { return Widest{value}; }
};

template <>
struct JsonForm<double> {
  static std::optional<double> read(const JsonValue& json) { return exactNumber<double>(json); }
  static JsonValue write(double value) { return value; }
};

template <>
struct JsonForm<NumberObject> {
  static std::optional<NumberObject> read(const JsonValue& json) {
    return NumberObject::fromJsonValue(json);
  }
  static JsonValue write(const NumberObject& value) { return value.jsonValue(); }
};

template <>
struct JsonForm<std::string> {
  static std::optional<std::string> read(const JsonValue& json) {
    return copyOf<std::string>(json.if_string());
  }
  static JsonValue write(const std::string& value) { return boost::json::string(value); }
};

template <>
struct JsonForm<JSON> {
  static std::optional<JSON> read(const JsonValue& json) { return copyOf<JSON>(json.if_object()); }
  static JsonValue write(const JSON& value) { return value; }
};

template <>
struct JsonForm<JsonArray> {
  static std::optional<JsonArray> read(const JsonValue& json) {
    return copyOf<JsonArray>(json.if_array());
  }
  static JsonValue write(const JsonArray& value) { return value; }
};

template <>
struct JsonForm<JsonValue> {
  static std::optional<JsonValue> read(const JsonValue& json) { return json; }
  static JsonValue write(const JsonValue& value) { return value; }
};

template <JsonType T>
struct JsonForm<std::vector<T>> {
  static std::optional<std::vector<T>> read(const JsonValue& json) {
    const JsonArray* array = json.if_array();
    if (array == nullptr) return std::nullopt;
    return transformArray<std::vector<T>>(*array, valueOf<T>);
  }
  static JsonValue write(const std::vector<T>& values) {
    JsonArray array;
    array.reserve(values.size());
    for (const T& value : values) array.push_back(jsonValueOf<T>(value));
    return array;
  }
};

template <JsonType T>
struct JsonForm<Dictionary<T>> {
  static std::optional<Dictionary<T>> read(const JsonValue& json) {
    const JSON* object = json.if_object();
    if (object == nullptr) return std::nullopt;
    Dictionary<T> dictionary;
    for (const auto& [key, entry] : *object) {
      auto value = valueOf<T>(entry);
      if (!value) return std::nullopt;
      dictionary.emplace(key, *std::move(value));
    }
    return dictionary;
  }
  static JsonValue write(const Dictionary<T>& dictionary) {
    JSON object;
    object.reserve(dictionary.size());
    for (const auto& [key, value] : dictionary) object.emplace(key, jsonValueOf<T>(value));
    return object;
  }
};

}  // namespace Vastel_Connect

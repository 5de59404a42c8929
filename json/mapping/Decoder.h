#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "json/ArrayTransform.h"
#include "json/Json.h"
#include "json/KeyPath.h"
#include "json/RawValue.h"
#include "json/ValueOf.h"
#include "json/mapping/DateFormatter.h"
#include "json/mapping/DictionaryTransform.h"
#include "json/mapping/Glossy.h"
#include "json/mapping/Url.h"

/// Functions that make functions which read one value out of a dictionary: first the lookup of a
/// key path, whose failure gives absent, then a conversion.
///
/// | Function                           | Reads                                                   |
/// |------------------------------------|---------------------------------------------------------|
/// | decode<T>                          | a value of type T, see ValueOf.h                        |
/// | decodeRecord<R>                    | a dictionary, by R::fromJson                            |
/// | decodeRecordArray<R>               | an array of dictionaries; one that fails fails all      |
/// | decodeRecordDictionary<R>          | a dictionary of dictionaries; one that fails is dropped |
/// | decodeRecordArrayDictionary<R>     | a dictionary of arrays of dictionaries; an array of     |
/// |                                    | which one fails is dropped                              |
/// | decodeEnum<E>                      | a raw value of E                                        |
/// | decodeEnumArray<E>                 | an array of them; an unknown one fails all              |
/// | decodeInt32, decodeUInt32,         | a number or a boolean, converted as NumberObject says,  |
/// | decodeInt64, decodeUInt64          | without any check of its range                          |
/// | decodeInt32Array and so on         | an array of numbers or booleans                         |
/// | decodeDate                         | a text, by the formatter                                |
/// | decodeDateArray                    | an array of texts; one that is no date fails all        |
/// | decodeUrl                          | a text, percent-encoded as a query before it is a URL   |
/// | decodeUrlArray                     | an array of texts, each as it stands; one that is no    |
/// |                                    | URL fails all                                           |
///
/// A value of another kind than the one named is absent. So is a dictionary or an array as a whole
/// that holds one, also where an entry that fails would only be dropped.
///
/// The delimiter is the program-wide one at the time of the call to these functions, not to those
/// that they give. The given functions keep copies of all that they need.
namespace Vastel_Connect::Decoder {

/// Reads one value; absent when there is none that fits.
template <typename T>
using Decode = std::function<std::optional<T>(const JSON&)>;

/// A function that looks `keyPath` up and converts what it finds.
template <typename T, typename Convert>
[[nodiscard]] Decode<T> decodeWith(std::string_view keyPath, std::string_view delimiter,
                                   Convert convert) {
  return [keyPath = std::string(keyPath), delimiter = std::string(delimiter),
          convert = std::move(convert)](const JSON& json) -> std::optional<T> {
    const JsonValue* value = valueForKeyPath(json, keyPath, delimiter);
    if (value == nullptr) return std::nullopt;
    return convert(*value);
  };
}

template <Decodable Record>
[[nodiscard]] std::optional<Record> recordOf(const JsonValue& value) {
  const JSON* dictionary = value.if_object();
  return dictionary != nullptr ? Record::fromJson(*dictionary) : std::nullopt;
}

/// An array of what `convert` gives for the elements; absent when it fails for one.
template <typename T, typename Convert>
[[nodiscard]] std::optional<std::vector<T>> arrayOf(const JsonValue& value, Convert convert) {
  const JsonArray* array = value.if_array();
  if (array == nullptr) return std::nullopt;
  return transformArray<std::vector<T>>(*array, convert);
}

template <Decodable Record>
[[nodiscard]] std::optional<std::vector<Record>> recordArrayOf(const JsonValue& value) {
  return arrayOf<Record>(value, recordOf<Record>);
}

template <RawRepresentable Enum>
[[nodiscard]] std::optional<Enum> enumOf(const JsonValue& value) {
  using Raw = RawValueOf<Enum>;
  // A raw text is a view; the text itself is what a JSON value is.
  using Held = std::conditional_t<std::is_same_v<Raw, std::string_view>, std::string, Raw>;
  const auto raw = valueOf<Held>(value);
  return raw ? initRawValue<Enum>(*raw) : std::nullopt;
}

[[nodiscard]] bool isDictionary(const JsonValue& value);
[[nodiscard]] bool isDictionaryArray(const JsonValue& value);

/// A dictionary of what `convert` gives for the values. Those for which it gives nothing are
/// dropped. Absent when `isOfKind` is false for one.
template <typename T, typename IsOfKind, typename Convert>
[[nodiscard]] std::optional<Dictionary<T>> dictionaryOf(const JsonValue& value, IsOfKind isOfKind,
                                                        Convert convert) {
  const JSON* dictionary = value.if_object();
  if (dictionary == nullptr) return std::nullopt;
  for (const auto& entry : *dictionary) {
    if (!isOfKind(entry.value())) return std::nullopt;
  }
  using Entry = std::pair<std::string, T>;
  return transformDictionary<Dictionary<T>>(
      *dictionary, [&](std::string_view key, const JsonValue& inner) -> std::optional<Entry> {
        auto converted = convert(inner);
        if (!converted) return std::nullopt;
        return Entry(key, *std::move(converted));
      });
}

template <JsonType T>
[[nodiscard]] Decode<T> decode(std::string_view keyPath,
                               std::string_view delimiter = keyPathDelimiter) {
  return decodeWith<T>(keyPath, delimiter, valueOf<T>);
}

template <Decodable Record>
[[nodiscard]] Decode<Record> decodeRecord(std::string_view keyPath,
                                          std::string_view delimiter = keyPathDelimiter) {
  return decodeWith<Record>(keyPath, delimiter, recordOf<Record>);
}

template <Decodable Record>
[[nodiscard]] Decode<std::vector<Record>> decodeRecordArray(
    std::string_view keyPath, std::string_view delimiter = keyPathDelimiter) {
  return decodeWith<std::vector<Record>>(keyPath, delimiter, recordArrayOf<Record>);
}

template <Decodable Record>
[[nodiscard]] Decode<Dictionary<Record>> decodeRecordDictionary(
    std::string_view keyPath, std::string_view delimiter = keyPathDelimiter) {
  return decodeWith<Dictionary<Record>>(keyPath, delimiter, [](const JsonValue& value) {
    return dictionaryOf<Record>(value, isDictionary, recordOf<Record>);
  });
}

template <Decodable Record>
[[nodiscard]] Decode<Dictionary<std::vector<Record>>> decodeRecordArrayDictionary(
    std::string_view keyPath, std::string_view delimiter = keyPathDelimiter) {
  using Records = std::vector<Record>;
  return decodeWith<Dictionary<Records>>(keyPath, delimiter, [](const JsonValue& value) {
    return dictionaryOf<Records>(value, isDictionaryArray, recordArrayOf<Record>);
  });
}

template <RawRepresentable Enum>
[[nodiscard]] Decode<Enum> decodeEnum(std::string_view keyPath,
                                      std::string_view delimiter = keyPathDelimiter) {
  return decodeWith<Enum>(keyPath, delimiter, enumOf<Enum>);
}

template <RawRepresentable Enum>
[[nodiscard]] Decode<std::vector<Enum>> decodeEnumArray(
    std::string_view keyPath, std::string_view delimiter = keyPathDelimiter) {
  return decodeWith<std::vector<Enum>>(keyPath, delimiter, [](const JsonValue& value) {
    return arrayOf<Enum>(value, enumOf<Enum>);
  });
}

[[nodiscard]] Decode<std::int32_t> decodeInt32(std::string_view keyPath,
                                               std::string_view delimiter = keyPathDelimiter);
[[nodiscard]] Decode<std::uint32_t> decodeUInt32(std::string_view keyPath,
                                                 std::string_view delimiter = keyPathDelimiter);
[[nodiscard]] Decode<std::int64_t> decodeInt64(std::string_view keyPath,
                                               std::string_view delimiter = keyPathDelimiter);
[[nodiscard]] Decode<std::uint64_t> decodeUInt64(std::string_view keyPath,
                                                 std::string_view delimiter = keyPathDelimiter);

[[nodiscard]] Decode<std::vector<std::int32_t>> decodeInt32Array(
    std::string_view keyPath, std::string_view delimiter = keyPathDelimiter);
[[nodiscard]] Decode<std::vector<std::uint32_t>> decodeUInt32Array(
    std::string_view keyPath, std::string_view delimiter = keyPathDelimiter);
[[nodiscard]] Decode<std::vector<std::int64_t>> decodeInt64Array(
    std::string_view keyPath, std::string_view delimiter = keyPathDelimiter);
[[nodiscard]] Decode<std::vector<std::uint64_t>> decodeUInt64Array(
    std::string_view keyPath, std::string_view delimiter = keyPathDelimiter);

[[nodiscard]] Decode<Date> decodeDate(std::string_view keyPath,
                                      const DateFormatter& formatter = sharedIso8601DateFormatter(),
                                      std::string_view delimiter = keyPathDelimiter);
[[nodiscard]] Decode<std::vector<Date>> decodeDateArray(
    std::string_view keyPath, const DateFormatter& formatter = sharedIso8601DateFormatter(),
    std::string_view delimiter = keyPathDelimiter);

[[nodiscard]] Decode<Url> decodeUrl(std::string_view keyPath,
                                    std::string_view delimiter = keyPathDelimiter);
[[nodiscard]] Decode<std::vector<Url>> decodeUrlArray(
    std::string_view keyPath, std::string_view delimiter = keyPathDelimiter);

}  // namespace Vastel_Connect::Decoder

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
#include "json/RawValue.h"
#include "json/ValueOf.h"
#include "json/mapping/DateFormatter.h"
#include "json/mapping/DictionaryTransform.h"
#include "json/mapping/Glossy.h"
#include "json/mapping/Url.h"
#include "json/mapping/Uuid.h"

/// Functions that make functions which turn a value into a dictionary with one entry. Its key is
/// the whole key path: joinJson splits it. An absent value gives an absent dictionary.
///
/// | Function                       | Stores                                                 |
/// |--------------------------------|--------------------------------------------------------|
/// | encode<T>                      | a value of a type T of ValueOf.h, as it is             |
/// | encodeRecord<R>                | the record's dictionary; absent when it has none       |
/// | encodeRecordArray<R>           | an array of those; absent when one record has none     |
/// | encodeRecordDictionary<R>      | a dictionary of those; a record without one is dropped |
/// | encodeRecordArrayDictionary<R> | a dictionary of such arrays; an array with a record    |
/// |                                | without one is dropped                                 |
/// | encodeEnum<E>                  | its raw value                                          |
/// | encodeEnumArray<E>             | an array of raw values                                 |
/// | encodeInt32, encodeUInt32,     | a number                                               |
/// | encodeInt64, encodeUInt64      |                                                        |
/// | encodeInt32Array and so on     | an array of numbers                                    |
/// | encodeDate                     | the formatter's text                                   |
/// | encodeDateArray                | an array of those texts                                |
/// | encodeUrl                      | its absolute string                                    |
/// | encodeUuid                     | its UUID string                                        |
///
/// The given functions keep copies of all that they need.
namespace Vastel_Connect::Encoder {

/// Writes one value; absent when there is none.
template <typename T>
using Encode = std::function<std::optional<JSON>(const std::optional<T>&)>;

/// A function that stores under `keyPath` what `convert` gives, an optional JSON value.
template <typename T, typename Convert>
[[nodiscard]] Encode<T> encodeWith(std::string_view keyPath, Convert convert) {
  return [keyPath = std::string(keyPath),
          convert = std::move(convert)](const std::optional<T>& value) -> std::optional<JSON> {
    if (!value) return std::nullopt;
    std::optional<JsonValue> converted = convert(*value);
    if (!converted) return std::nullopt;
    JSON json;
    json.emplace(keyPath, *std::move(converted));
    return json;
  };
}

/// The array of what `convert` gives for the elements; absent when it gives nothing for one.
template <typename T, typename Convert>
[[nodiscard]] std::optional<JsonValue> arrayFrom(const std::vector<T>& values, Convert convert) {
  return transformArray<JsonArray>(values, convert);
}

/// The dictionary of what `convert` gives for the values; one for which it gives nothing is
/// dropped.
template <typename T, typename Convert>
[[nodiscard]] std::optional<JsonValue> dictionaryFrom(const Dictionary<T>& dictionary,
                                                      Convert convert) {
  using Entry = std::pair<std::string, JsonValue>;
  return transformDictionary<JSON>(
      dictionary, [&](const std::string& key, const T& value) -> std::optional<Entry> {
        std::optional<JsonValue> converted = convert(value);
        if (!converted) return std::nullopt;
        return Entry(key, *std::move(converted));
      });
}

template <Encodable Record>
[[nodiscard]] std::optional<JsonValue> recordFrom(const Record& record) {
  return record.toJson();
}

template <Encodable Record>
[[nodiscard]] std::optional<JsonValue> recordArrayFrom(const std::vector<Record>& records) {
  return arrayFrom(records, recordFrom<Record>);
}

template <RawRepresentable Enum>
[[nodiscard]] std::optional<JsonValue> enumFrom(Enum value) {
  return JsonValue(rawValue(value));
}

template <JsonType T>
[[nodiscard]] Encode<T> encode(std::string_view keyPath) {
  return encodeWith<T>(keyPath, jsonValueOf<T>);
}

template <Encodable Record>
[[nodiscard]] Encode<Record> encodeRecord(std::string_view keyPath) {
  return encodeWith<Record>(keyPath, recordFrom<Record>);
}

template <Encodable Record>
[[nodiscard]] Encode<std::vector<Record>> encodeRecordArray(std::string_view keyPath) {
  return encodeWith<std::vector<Record>>(keyPath, recordArrayFrom<Record>);
}

template <Encodable Record>
[[nodiscard]] Encode<Dictionary<Record>> encodeRecordDictionary(std::string_view keyPath) {
  return encodeWith<Dictionary<Record>>(keyPath, [](const Dictionary<Record>& records) {
    return dictionaryFrom(records, recordFrom<Record>);
  });
}

template <Encodable Record>
[[nodiscard]] Encode<Dictionary<std::vector<Record>>> encodeRecordArrayDictionary(
    std::string_view keyPath) {
  using Records = std::vector<Record>;
  return encodeWith<Dictionary<Records>>(keyPath, [](const Dictionary<Records>& records) {
    return dictionaryFrom(records, recordArrayFrom<Record>);
  });
}

template <RawRepresentable Enum>
[[nodiscard]] Encode<Enum> encodeEnum(std::string_view keyPath) {
  return encodeWith<Enum>(keyPath, enumFrom<Enum>);
}

template <RawRepresentable Enum>
[[nodiscard]] Encode<std::vector<Enum>> encodeEnumArray(std::string_view keyPath) {
  return encodeWith<std::vector<Enum>>(
      keyPath, [](const std::vector<Enum>& values) { return arrayFrom(values, enumFrom<Enum>); });
}

[[nodiscard]] Encode<std::int32_t> encodeInt32(std::string_view keyPath);
[[nodiscard]] Encode<std::uint32_t> encodeUInt32(std::string_view keyPath);
[[nodiscard]] Encode<std::int64_t> encodeInt64(std::string_view keyPath);
[[nodiscard]] Encode<std::uint64_t> encodeUInt64(std::string_view keyPath);

[[nodiscard]] Encode<std::vector<std::int32_t>> encodeInt32Array(std::string_view keyPath);
[[nodiscard]] Encode<std::vector<std::uint32_t>> encodeUInt32Array(std::string_view keyPath);
[[nodiscard]] Encode<std::vector<std::int64_t>> encodeInt64Array(std::string_view keyPath);
[[nodiscard]] Encode<std::vector<std::uint64_t>> encodeUInt64Array(std::string_view keyPath);

[[nodiscard]] Encode<Date> encodeDate(
    std::string_view keyPath, const DateFormatter& formatter = sharedIso8601DateFormatter());
[[nodiscard]] Encode<std::vector<Date>> encodeDateArray(
    std::string_view keyPath, const DateFormatter& formatter = sharedIso8601DateFormatter());

[[nodiscard]] Encode<Url> encodeUrl(std::string_view keyPath);
[[nodiscard]] Encode<Uuid> encodeUuid(std::string_view keyPath);

}  // namespace Vastel_Connect::Encoder

#include "json/mapping/Decoder.h"

#include <algorithm>

namespace Vastel_Connect::Decoder {
namespace {

/// How one of the number types is read.
template <typename Number>
using Accessor = Number (NumberObject::*)() const;

template <typename Number>
std::optional<Number> numberOf(const JsonValue& value, Accessor<Number> accessor) {
  const auto number = NumberObject::fromJsonValue(value);
  return number ? std::optional(((*number).*accessor)()) : std::nullopt;
}

template <typename Number>
Decode<Number> decodeNumber(std::string_view keyPath, std::string_view delimiter,
                            Accessor<Number> accessor) {
  return decodeWith<Number>(keyPath, delimiter, [accessor](const JsonValue& value) {
    return numberOf<Number>(value, accessor);
  });
}

template <typename Number>
Decode<std::vector<Number>> decodeNumberArray(std::string_view keyPath, std::string_view delimiter,
                                              Accessor<Number> accessor) {
  return decodeWith<std::vector<Number>>(keyPath, delimiter, [accessor](const JsonValue& value) {
    return arrayOf<Number>(
        value, [&](const JsonValue& element) { return numberOf<Number>(element, accessor); });
  });
}

std::optional<Date> dateOf(const JsonValue& value, const DateFormatter& formatter) {
  const auto text = valueOf<std::string>(value);
  return text ? formatter.dateFromString(*text) : std::nullopt;
}

std::optional<Url> urlOf(const JsonValue& value) {
  const auto text = valueOf<std::string>(value);
  const auto encoded = text ? percentEncodedForQuery(*text) : std::nullopt;
  return encoded ? Url::fromText(*encoded) : std::nullopt;
}

std::optional<Url> urlAsItStands(const JsonValue& value) {
  const auto text = valueOf<std::string>(value);
  return text ? Url::fromText(*text) : std::nullopt;
}

}  // namespace

bool isDictionary(const JsonValue& value) {
  return value.is_object();
}

bool isDictionaryArray(const JsonValue& value) {
  const JsonArray* array = value.if_array();
  return array != nullptr && std::all_of(array->begin(), array->end(), isDictionary);
}

Decode<std::int32_t> decodeInt32(std::string_view keyPath, std::string_view delimiter) {
  return decodeNumber<std::int32_t>(keyPath, delimiter, &NumberObject::intValue);
}

Decode<std::uint32_t> decodeUInt32(std::string_view keyPath, std::string_view delimiter) {
  return decodeNumber<std::uint32_t>(keyPath, delimiter, &NumberObject::unsignedIntValue);
}

Decode<std::int64_t> decodeInt64(std::string_view keyPath, std::string_view delimiter) {
  return decodeNumber<std::int64_t>(keyPath, delimiter, &NumberObject::longLongValue);
}

Decode<std::uint64_t> decodeUInt64(std::string_view keyPath, std::string_view delimiter) {
  return decodeNumber<std::uint64_t>(keyPath, delimiter, &NumberObject::unsignedLongLongValue);
}

Decode<std::vector<std::int32_t>> decodeInt32Array(std::string_view keyPath,
                                                   std::string_view delimiter) {
  return decodeNumberArray<std::int32_t>(keyPath, delimiter, &NumberObject::intValue);
}

Decode<std::vector<std::uint32_t>> decodeUInt32Array(std::string_view keyPath,
                                                     std::string_view delimiter) {
  return decodeNumberArray<std::uint32_t>(keyPath, delimiter, &NumberObject::unsignedIntValue);
}

Decode<std::vector<std::int64_t>> decodeInt64Array(std::string_view keyPath,
                                                   std::string_view delimiter) {
  return decodeNumberArray<std::int64_t>(keyPath, delimiter, &NumberObject::longLongValue);
}

Decode<std::vector<std::uint64_t>> decodeUInt64Array(std::string_view keyPath,
                                                     std::string_view delimiter) {
  return decodeNumberArray<std::uint64_t>(keyPath, delimiter, &NumberObject::unsignedLongLongValue);
}

Decode<Date> decodeDate(std::string_view keyPath, const DateFormatter& formatter,
                        std::string_view delimiter) {
  return decodeWith<Date>(keyPath, delimiter,
                          [formatter](const JsonValue& value) { return dateOf(value, formatter); });
}

Decode<std::vector<Date>> decodeDateArray(std::string_view keyPath, const DateFormatter& formatter,
                                          std::string_view delimiter) {
  return decodeWith<std::vector<Date>>(keyPath, delimiter, [formatter](const JsonValue& value) {
    return arrayOf<Date>(value,
                         [&](const JsonValue& element) { return dateOf(element, formatter); });
  });
}

Decode<Url> decodeUrl(std::string_view keyPath, std::string_view delimiter) {
  return decodeWith<Url>(keyPath, delimiter, urlOf);
}

Decode<std::vector<Url>> decodeUrlArray(std::string_view keyPath, std::string_view delimiter) {
  return decodeWith<std::vector<Url>>(keyPath, delimiter, [](const JsonValue& value) {
    return arrayOf<Url>(value, urlAsItStands);
  });
}

}  // namespace Vastel_Connect::Decoder

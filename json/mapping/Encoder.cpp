#include "json/mapping/Encoder.h"

#include "json/NumberObject.h"

namespace Vastel_Connect::Encoder {
namespace {

template <typename Number>
std::optional<JsonValue> numberFrom(Number number) {
  return NumberObject(number).jsonValue();
}

template <typename Number>
Encode<std::vector<Number>> encodeNumberArray(std::string_view keyPath) {
  return encodeWith<std::vector<Number>>(keyPath, [](const std::vector<Number>& numbers) {
    return arrayFrom(numbers, numberFrom<Number>);
  });
}

std::optional<JsonValue> dateFrom(Date date, const DateFormatter& formatter) {
  return JsonValue(formatter.stringFromDate(date));
}

}  // namespace

Encode<std::int32_t> encodeInt32(std::string_view keyPath) {
  return encodeWith<std::int32_t>(keyPath, numberFrom<std::int32_t>);
}

Encode<std::uint32_t> encodeUInt32(std::string_view keyPath) {
  return encodeWith<std::uint32_t>(keyPath, numberFrom<std::uint32_t>);
}

Encode<std::int64_t> encodeInt64(std::string_view keyPath) {
  return encodeWith<std::int64_t>(keyPath, numberFrom<std::int64_t>);
}

Encode<std::uint64_t> encodeUInt64(std::string_view keyPath) {
  return encodeWith<std::uint64_t>(keyPath, numberFrom<std::uint64_t>);
}

Encode<std::vector<std::int32_t>> encodeInt32Array(std::string_view keyPath) {
  return encodeNumberArray<std::int32_t>(keyPath);
}

Encode<std::vector<std::uint32_t>> encodeUInt32Array(std::string_view keyPath) {
  return encodeNumberArray<std::uint32_t>(keyPath);
}

Encode<std::vector<std::int64_t>> encodeInt64Array(std::string_view keyPath) {
  return encodeNumberArray<std::int64_t>(keyPath);
}

Encode<std::vector<std::uint64_t>> encodeUInt64Array(std::string_view keyPath) {
  return encodeNumberArray<std::uint64_t>(keyPath);
}

Encode<Date> encodeDate(std::string_view keyPath, const DateFormatter& formatter) {
  return encodeWith<Date>(keyPath, [formatter](Date date) { return dateFrom(date, formatter); });
}

Encode<std::vector<Date>> encodeDateArray(std::string_view keyPath,
                                          const DateFormatter& formatter) {
  return encodeWith<std::vector<Date>>(keyPath, [formatter](const std::vector<Date>& dates) {
    return arrayFrom(dates, [&](Date date) { return dateFrom(date, formatter); });
  });
}

Encode<Url> encodeUrl(std::string_view keyPath) {
  return encodeWith<Url>(keyPath, [](const Url& url) { return JsonValue(url.absoluteString()); });
}

Encode<Uuid> encodeUuid(std::string_view keyPath) {
  return encodeWith<Uuid>(keyPath, [](const Uuid& uuid) { return JsonValue(uuid.uuidString()); });
}

}  // namespace Vastel_Connect::Encoder

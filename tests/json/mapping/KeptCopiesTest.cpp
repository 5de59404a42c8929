// What the functions that Decoder.h and Encoder.h make take with them.
#include <gtest/gtest.h>

#include "json/mapping/Decoder.h"
#include "json/mapping/Encoder.h"
#include "tests/json/mapping/Records.h"

namespace Vastel_Connect {
namespace {

/// `make` is given a key path, and a delimiter or none; `value` is a JSON text that it reads.
template <typename Make>
void expectCopies(const std::string& value, Make make) {
  SCOPED_TRACE(value);
  const JSON json = parsed(R"({"a":{"b":)" + value + R"(},"x":1})");
  std::string path = "a/b";
  std::string delimiter = "/";
  const auto given = make(path, delimiter);
  keyPathDelimiter = "/";
  const auto programWide = make(path);
  keyPathDelimiter = ".";
  // Written over where they stand, for whoever still looks there.
  path = "x.y";
  delimiter = ".";
  EXPECT_TRUE(given(json));
  EXPECT_TRUE(programWide(json));
  EXPECT_TRUE(make("a.b")(json));
  EXPECT_FALSE(make("a.b", "/")(json));
}

TEST(Decoder, TakesCopiesOfKeyPathAndDelimiter) {
  using namespace Decoder;
  expectCopies("1", [](auto... given) { return decode<int>(given...); });
  expectCopies(R"({"n":1})", [](auto... given) { return decodeRecord<Small>(given...); });
  expectCopies(R"([{"n":1}])", [](auto... given) { return decodeRecordArray<Small>(given...); });
  expectCopies(R"({"k":{"n":1}})",
               [](auto... given) { return decodeRecordDictionary<Small>(given...); });
  expectCopies(R"({"k":[{"n":1}]})",
               [](auto... given) { return decodeRecordArrayDictionary<Small>(given...); });
  expectCopies(R"("red")", [](auto... given) { return decodeEnum<Color>(given...); });
  expectCopies(R"(["red"])", [](auto... given) { return decodeEnumArray<Color>(given...); });
  expectCopies("1", [](auto... given) { return decodeInt32(given...); });
  expectCopies("1", [](auto... given) { return decodeUInt32(given...); });
  expectCopies("1", [](auto... given) { return decodeInt64(given...); });
  expectCopies("1", [](auto... given) { return decodeUInt64(given...); });
  expectCopies("[1]", [](auto... given) { return decodeInt32Array(given...); });
  expectCopies("[1]", [](auto... given) { return decodeUInt32Array(given...); });
  expectCopies("[1]", [](auto... given) { return decodeInt64Array(given...); });
  expectCopies("[1]", [](auto... given) { return decodeUInt64Array(given...); });
  expectCopies(R"("a")", [](auto... given) { return decodeUrl(given...); });
  expectCopies(R"(["a"])", [](auto... given) { return decodeUrlArray(given...); });
  expectCopies(R"("2018-03-05T14:07:09Z")", [](std::string_view path, auto... given) {
    if constexpr (sizeof...(given) == 0) return decodeDate(path);
    return decodeDate(path, sharedIso8601DateFormatter(), given...);
  });
  expectCopies(R"(["2018-03-05T14:07:09Z"])", [](std::string_view path, auto... given) {
    if constexpr (sizeof...(given) == 0) return decodeDateArray(path);
    return decodeDateArray(path, sharedIso8601DateFormatter(), given...);
  });
}

TEST(Decoder, TakesACopyOfTheFormatter) {
  auto formatter = *DateFormatter::forPattern("HH:mm");
  const auto decode = Decoder::decodeDate("v", formatter);
  const auto decodeArray = Decoder::decodeDateArray("v", formatter);
  formatter = *DateFormatter::forPattern("'other'");
  EXPECT_TRUE(decode(parsed(R"({"v":"14:07"})")));
  EXPECT_TRUE(decodeArray(parsed(R"({"v":["14:07"]})")));
}

TEST(Encoder, TakesCopiesOfKeyPathAndFormatter) {
  std::string path = "a";
  auto formatter = *DateFormatter::forPattern("'x'");
  const auto encode = Encoder::encode<int>(path);
  const auto encodeDate = Encoder::encodeDate(path, formatter);
  const auto encodeDateArray = Encoder::encodeDateArray(path, formatter);
  path = "b";
  formatter = *DateFormatter::forPattern("'other'");
  EXPECT_EQ(encode(1), (JSON{{"a", 1}}));
  EXPECT_EQ(encodeDate(Date()), (JSON{{"a", "x"}}));
  EXPECT_EQ(encodeDateArray(std::vector{Date()}), parsed(R"({"a":["x"]})"));
}

}  // namespace
}  // namespace Vastel_Connect

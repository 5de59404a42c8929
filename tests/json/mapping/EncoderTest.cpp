// Tests json/mapping/Encoder.h.
#include "json/mapping/Encoder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <type_traits>

#include "tests/json/mapping/Records.h"
#include "tests/platform/ScopedEnvironment.h"

namespace Vastel_Connect {
namespace {

using namespace Encoder;

template <typename T>
using Make = Encode<T> (*)(std::string_view path);

/// A value, and the JSON text that is stored for it; an empty one where nothing is.
template <typename T>
using Rows = std::type_identity_t<std::vector<std::pair<T, std::string>>>;

/// Expects the function that `make` makes of a key path to store what the rows say under a copy of
/// the whole path, and nothing for an absent value.
template <typename T>
void expectEncodes(Make<T> make, const Rows<T>& rows) {
  std::string path = "a.b";
  const Encode<T> encode = make(path);
  // Written over where it stands, for whoever still looks there.
  path = "x.y";
  EXPECT_FALSE(encode(std::nullopt));
  for (const auto& [value, stored] : rows) {
    const auto json = encode(value);
    const std::string text = json ? *writeJsonText(*json) : "";
    EXPECT_EQ(text, stored.empty() ? "" : R"({"a.b":)" + stored + "}");
  }
}

TEST(Encode, StoresAValueAsItIs) {
  expectEncodes(encode<std::string>, {{"x", R"("x")"}});
}

TEST(EncodeRecord, StoresTheRecordsDictionaryAndOfAnArrayAllOrNone) {
  expectEncodes(encodeRecord<Small>, {{{3}, R"({"n":3})"}, {{-1}, ""}});
  expectEncodes(encodeRecordArray<Small>,
                {{{{3}, {1}}, R"([{"n":3},{"n":1}])"}, {{}, "[]"}, {{{3}, {-1}}, ""}});
}

TEST(EncodeRecordDictionary, DropsARecordAndAnArrayThatHaveNoForm) {
  expectEncodes(
      encodeRecordDictionary<Small>,
      {{{{"a", {3}}, {"b", {-1}}, {"c", {1}}}, R"({"a":{"n":3},"c":{"n":1}})"}, {{}, "{}"}});
  using Smalls = std::vector<Small>;
  expectEncodes(encodeRecordArrayDictionary<Small>,
                {{{{"a", {{3}, {1}}}, {"b", {{3}, {-1}}}, {"c", Smalls{}}},
                  R"({"a":[{"n":3},{"n":1}],"c":[]})"}});
}

TEST(EncodeEnum, StoresTheRawValueAndAnEmptyOneForWhatIsNoCase) {
  expectEncodes(encodeEnum<Color>,
                {{Color::Green, R"("green")"}, {static_cast<Color>(2), R"("")"}});
  expectEncodes(encodeEnum<Level>, {{Level::High, "10"}, {static_cast<Level>(2), "0"}});
  expectEncodes(encodeEnumArray<Color>, {{{Color::Green, Color::Red}, R"(["green","red"])"}});
}

/// From the type's lowest value, or from its highest.
template <typename T>
void expectEncodesIntegers(Make<T> make, Make<std::vector<T>> makeArray, T edge) {
  const std::string text = std::to_string(edge);
  expectEncodes(make, {{edge, text}, {1, "1"}});
  expectEncodes(makeArray, {{{1, edge}, "[1," + text + "]"}, {{}, "[]"}});
}

TEST(EncodeIntegers, StoreNumbers) {
  expectEncodesIntegers(encodeInt32, encodeInt32Array, INT32_MIN);
  expectEncodesIntegers(encodeUInt32, encodeUInt32Array, UINT32_MAX);
  expectEncodesIntegers(encodeInt64, encodeInt64Array, INT64_MIN);
  expectEncodesIntegers(encodeUInt64, encodeUInt64Array, UINT64_MAX);
}

TEST(EncodeDate, WritesIso8601ForEveryDate) {
  const ScopedEnvironment zone("TZ", "GMT");
  const Date date(std::chrono::seconds(1520255229));
  const Date far(std::chrono::seconds(400000000000));
  expectEncodes<Date>([](std::string_view path) { return encodeDate(path); },
                      {{date, R"("2018-03-05T13:07:09Z")"}, {far, R"("14645-06-30T15:06:40Z")"}});
  expectEncodes<std::vector<Date>>(
      [](std::string_view path) { return encodeDateArray(path); },
      {{{date, far}, R"(["2018-03-05T13:07:09Z","14645-06-30T15:06:40Z"])"}});
}

TEST(EncodeDate, KeepsACopyOfTheFormatterThatItIsGiven) {
  auto formatter = *DateFormatter::forPattern("'x'");
  const auto encode = encodeDate("v", formatter);
  const auto encodeArray = encodeDateArray("v", formatter);
  formatter = *DateFormatter::forPattern("'other'");
  EXPECT_EQ(encode(Date()), parsed(R"({"v":"x"})"));
  EXPECT_EQ(encodeArray(std::vector{Date()}), parsed(R"({"v":["x"]})"));
}

TEST(EncodeUrlAndUuid, StoreTheirTexts) {
  expectEncodes(encodeUrl, {{*Url::fromText("http://h/%20"), R"("http://h/%20")"}});
  const Uuid uuid = {{0xE6, 0x21, 0xE1, 0xF8, 0xC3, 0x6C, 0x49, 0x5A,  //
                      0x93, 0xFC, 0x0C, 0x24, 0x7A, 0x3E, 0x6E, 0x5F}};
  expectEncodes(encodeUuid, {{uuid, R"("E621E1F8-C36C-495A-93FC-0C247A3E6E5F")"}});
}

}  // namespace
}  // namespace Vastel_Connect

#include "json/mapping/Encoder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>

#include "tests/json/mapping/InZone.h"
#include "tests/json/mapping/Records.h"

namespace Vastel_Connect {
namespace {

/// The dictionary as JSON text.
std::string text(const std::optional<JSON>& json) {
  return json ? *writeJsonText(*json) : "absent";
}

TEST(Encode, StoresAValueAsItIs) {
  EXPECT_EQ(text(Encoder::encode<bool>("v")(true)), R"({"v":true})");
  EXPECT_EQ(text(Encoder::encode<std::string>("v")("x")), R"({"v":"x"})");
  EXPECT_EQ(text(Encoder::encode<JsonValue>("v")(JsonValue(nullptr))), R"({"v":null})");
  EXPECT_EQ(text(Encoder::encode<Dictionary<int>>("v")(Dictionary<int>{{"a", 1}})),
            R"({"v":{"a":1}})");
  EXPECT_EQ(text(Encoder::encode<std::vector<int>>("v")(std::vector<int>{})), R"({"v":[]})");
}

TEST(Encode, LeavesTheKeyPathWhole) {
  EXPECT_EQ(text(Encoder::encode<int>("a.b")(1)), R"({"a.b":1})");
  EXPECT_EQ(text(Encoder::encode<int>("")(1)), R"({"":1})");
}

template <typename T>
void expectAbsent(const Encoder::Encode<T>& encode) {
  EXPECT_EQ(text(encode(std::nullopt)), "absent");
}

TEST(Encode, IsAbsentForAnAbsentValue) {
  expectAbsent(Encoder::encode<std::string>("v"));
  expectAbsent(Encoder::encodeRecord<Small>("v"));
  expectAbsent(Encoder::encodeRecordArray<Small>("v"));
  expectAbsent(Encoder::encodeRecordDictionary<Small>("v"));
  expectAbsent(Encoder::encodeRecordArrayDictionary<Small>("v"));
  expectAbsent(Encoder::encodeEnum<Color>("v"));
  expectAbsent(Encoder::encodeEnumArray<Color>("v"));
  expectAbsent(Encoder::encodeInt32("v"));
  expectAbsent(Encoder::encodeUInt32("v"));
  expectAbsent(Encoder::encodeInt64("v"));
  expectAbsent(Encoder::encodeUInt64("v"));
  expectAbsent(Encoder::encodeInt32Array("v"));
  expectAbsent(Encoder::encodeUInt32Array("v"));
  expectAbsent(Encoder::encodeInt64Array("v"));
  expectAbsent(Encoder::encodeUInt64Array("v"));
  expectAbsent(Encoder::encodeDate("v"));
  expectAbsent(Encoder::encodeDateArray("v"));
  expectAbsent(Encoder::encodeUrl("v"));
  expectAbsent(Encoder::encodeUuid("v"));
}

TEST(EncodeRecord, StoresTheRecordsDictionary) {
  const auto encode = Encoder::encodeRecord<Small>("v");
  EXPECT_EQ(text(encode(Small{3})), R"({"v":{"n":3}})");
  EXPECT_EQ(text(encode(Small{-1})), "absent");
}

TEST(EncodeRecordArray, StoresAllRecordsOrNone) {
  const auto encode = Encoder::encodeRecordArray<Small>("v");
  EXPECT_EQ(text(encode({{{3}, {1}}})), R"({"v":[{"n":3},{"n":1}]})");
  EXPECT_EQ(text(encode(std::vector<Small>{})), R"({"v":[]})");
  EXPECT_EQ(text(encode({{{3}, {-1}}})), "absent");
}

TEST(EncodeRecordDictionary, DropsARecordThatHasNone) {
  const auto encode = Encoder::encodeRecordDictionary<Small>("v");
  EXPECT_EQ(text(encode(Dictionary<Small>{{"a", {3}}, {"b", {-1}}, {"c", {1}}})),
            R"({"v":{"a":{"n":3},"c":{"n":1}}})");
  EXPECT_EQ(text(encode(Dictionary<Small>{{"b", {-1}}})), R"({"v":{}})");
  EXPECT_EQ(text(encode(Dictionary<Small>{})), R"({"v":{}})");
}

TEST(EncodeRecordArrayDictionary, DropsAnArrayWithARecordThatHasNone) {
  const auto encode = Encoder::encodeRecordArrayDictionary<Small>("v");
  EXPECT_EQ(text(encode(Dictionary<std::vector<Small>>{
                {"a", {{3}, {1}}}, {"b", {{3}, {-1}}}, {"c", std::vector<Small>{}}})),
            R"({"v":{"a":[{"n":3},{"n":1}],"c":[]}})");
}

TEST(EncodeEnum, StoresTheRawValue) {
  EXPECT_EQ(text(Encoder::encodeEnum<Color>("v")(Color::Green)), R"({"v":"green"})");
  EXPECT_EQ(text(Encoder::encodeEnum<Level>("v")(Level::High)), R"({"v":10})");
}

TEST(EncodeEnum, StoresAnEmptyRawValueForWhatIsNoCase) {
  EXPECT_EQ(text(Encoder::encodeEnum<Color>("v")(static_cast<Color>(2))), R"({"v":""})");
  EXPECT_EQ(text(Encoder::encodeEnum<Level>("v")(static_cast<Level>(2))), R"({"v":0})");
}

TEST(EncodeEnumArray, StoresTheRawValues) {
  EXPECT_EQ(text(Encoder::encodeEnumArray<Color>("v")({{Color::Green, Color::Red}})),
            R"({"v":["green","red"]})");
  EXPECT_EQ(text(Encoder::encodeEnumArray<Level>("v")(std::vector<Level>{})), R"({"v":[]})");
}

TEST(EncodeIntegers, StoreNumbers) {
  using std::numeric_limits;
  EXPECT_EQ(text(Encoder::encodeInt32("v")(numeric_limits<std::int32_t>::min())),
            R"({"v":-2147483648})");
  EXPECT_EQ(text(Encoder::encodeUInt32("v")(numeric_limits<std::uint32_t>::max())),
            R"({"v":4294967295})");
  EXPECT_EQ(text(Encoder::encodeInt64("v")(numeric_limits<std::int64_t>::min())),
            R"({"v":-9223372036854775808})");
  EXPECT_EQ(text(Encoder::encodeUInt64("v")(numeric_limits<std::uint64_t>::max())),
            R"({"v":18446744073709551615})");
}

TEST(EncodeIntegerArrays, StoreNumbers) {
  EXPECT_EQ(text(Encoder::encodeInt32Array("v")({{1, -2}})), R"({"v":[1,-2]})");
  EXPECT_EQ(text(Encoder::encodeUInt32Array("v")({{1, 4294967295U}})), R"({"v":[1,4294967295]})");
  EXPECT_EQ(text(Encoder::encodeInt64Array("v")({{1, -4294967296}})), R"({"v":[1,-4294967296]})");
  EXPECT_EQ(text(Encoder::encodeUInt64Array("v")({{1, 18446744073709551615U}})),
            R"({"v":[1,18446744073709551615]})");
  EXPECT_EQ(text(Encoder::encodeInt32Array("v")(std::vector<std::int32_t>{})), R"({"v":[]})");
}

const Date kDate = Date(std::chrono::seconds(1520255229));
const Date kFarDate = Date(std::chrono::seconds(400000000000));

TEST(EncodeDate, WritesIso8601UnlessToldOtherwise) {
  const InZone zone("Europe/Berlin");
  EXPECT_EQ(text(Encoder::encodeDate("v")(kDate)), R"({"v":"2018-03-05T14:07:09+01:00"})");
  EXPECT_EQ(text(Encoder::encodeDate("v", *DateFormatter::forPattern("HH:mm"))(kDate)),
            R"({"v":"14:07"})");
}

TEST(EncodeDate, WritesEveryDate) {
  const InZone zone("GMT");
  EXPECT_EQ(text(Encoder::encodeDate("v")(kFarDate)), R"({"v":"14645-06-30T15:06:40Z"})");
}

TEST(EncodeDateArray, WritesEveryDate) {
  const InZone zone("GMT");
  const auto encode = Encoder::encodeDateArray("v");
  EXPECT_EQ(text(encode({{kDate, Date()}})),
            R"({"v":["2018-03-05T13:07:09Z","1970-01-01T00:00:00Z"]})");
  EXPECT_EQ(text(encode(std::vector<Date>{})), R"({"v":[]})");
  EXPECT_EQ(text(encode({{kDate, kFarDate}})),
            R"({"v":["2018-03-05T13:07:09Z","14645-06-30T15:06:40Z"]})");
}

TEST(EncodeUrl, StoresTheAbsoluteString) {
  EXPECT_EQ(text(Encoder::encodeUrl("v")(Url::fromText("http://h/%20"))),
            R"({"v":"http://h/%20"})");
}

TEST(EncodeUuid, StoresTheUuidString) {
  EXPECT_EQ(text(Encoder::encodeUuid("v")(Uuid{{0xAB}})),
            R"({"v":"AB000000-0000-0000-0000-000000000000"})");
}

}  // namespace
}  // namespace Vastel_Connect

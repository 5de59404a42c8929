#include "json/mapping/Decoder.h"

#include <gmock/gmock.h>

#include <set>

#include "tests/json/mapping/InZone.h"
#include "tests/json/mapping/Records.h"
#include "tests/json/mapping/UnixTime.h"

namespace Vastel_Connect {
namespace {

using testing::ElementsAre;
using testing::Optional;
using testing::Pair;
using testing::UnorderedElementsAre;

/// What is no value for any function but those of its kind, one of each kind.
const std::vector<std::pair<std::string, std::string>> kKinds = {
    {"null", R"({"v":null})"},     {"boolean", R"({"v":true})"}, {"number", R"({"v":1})"},
    {"text", R"({"v":"not it"})"}, {"array", R"({"v":[[]]})"},   {"object", R"({"v":{"a":"x"}})"},
};

/// Reads `json` under "v". A missing key, and every kind that is not in `kinds`, must be absent.
template <typename Decode>
void expectAbsentForOtherKinds(const Decode& decode, const std::set<std::string>& kinds = {}) {
  EXPECT_FALSE(decode(JSON{})) << "missing";
  EXPECT_FALSE(decode(parsed(R"({"V":1})"))) << "missing";
  int tried = 0;
  for (const auto& [kind, json] : kKinds) {
    if (kinds.contains(kind)) continue;
    EXPECT_FALSE(decode(parsed(json))) << kind;
    ++tried;
  }
  EXPECT_GT(tried, 0);
}

TEST(Decode, GivesAValueOfItsType) {
  EXPECT_EQ(Decoder::decode<int>("v")(parsed(R"({"v":5})")), 5);
  EXPECT_EQ(Decoder::decode<bool>("v")(parsed(R"({"v":false})")), false);
  EXPECT_EQ(Decoder::decode<std::string>("v")(parsed(R"({"v":"x"})")), "x");
  EXPECT_EQ(Decoder::decode<JsonValue>("v")(parsed(R"({"v":null})")), JsonValue(nullptr));
  EXPECT_THAT(Decoder::decode<std::vector<int>>("v")(parsed(R"({"v":[2,1]})")),
              Optional(ElementsAre(2, 1)));
}

TEST(Decode, IsAbsentForOtherKinds) {
  expectAbsentForOtherKinds(Decoder::decode<int>("v"), {"number"});
  expectAbsentForOtherKinds(Decoder::decode<bool>("v"), {"boolean"});
  expectAbsentForOtherKinds(Decoder::decode<std::string>("v"), {"text"});
  expectAbsentForOtherKinds(Decoder::decode<std::vector<int>>("v"));
}

TEST(Decode, FollowsAKeyPath) {
  const auto json = parsed(R"({"a":{"b":{"c":7}},"x":[{"b":7}],"a/b":8})");
  EXPECT_EQ(Decoder::decode<int>("a.b.c")(json), 7);
  EXPECT_EQ(Decoder::decode<int>("a/b/c", "/")(json), 7);
  EXPECT_EQ(Decoder::decode<int>("a/b")(json), 8);
  EXPECT_EQ(Decoder::decode<int>("a.b.d")(json), std::nullopt);
  EXPECT_EQ(Decoder::decode<int>("a.b.c.d")(json), std::nullopt);
  EXPECT_EQ(Decoder::decode<int>("x.b")(json), std::nullopt);
  EXPECT_EQ(Decoder::decode<int>("x.0.b")(json), std::nullopt);
}

TEST(DecodeRecord, BuildsTheRecord) {
  const auto decode = Decoder::decodeRecord<Small>("v");
  EXPECT_EQ(decode(parsed(R"({"v":{"n":3}})")), Small{3});
  EXPECT_EQ(decode(parsed(R"({"v":{"n":"3"}})")), std::nullopt);
  expectAbsentForOtherKinds(decode);
}

TEST(DecodeRecordArray, BuildsAllRecordsOrNone) {
  const auto decode = Decoder::decodeRecordArray<Small>("v");
  EXPECT_THAT(decode(parsed(R"({"v":[{"n":3},{"n":1}]})")),
              Optional(ElementsAre(Small{3}, Small{1})));
  EXPECT_THAT(decode(parsed(R"({"v":[]})")), Optional(ElementsAre()));
  EXPECT_EQ(decode(parsed(R"({"v":[{"n":3},{}]})")), std::nullopt);
  EXPECT_EQ(decode(parsed(R"({"v":[{"n":3},3]})")), std::nullopt);
  expectAbsentForOtherKinds(decode);
}

TEST(DecodeRecordDictionary, DropsRecordsThatFail) {
  const auto decode = Decoder::decodeRecordDictionary<Small>("v");
  EXPECT_THAT(decode(parsed(R"({"v":{"a":{"n":3},"b":{},"c":{"n":1}}})")),
              Optional(UnorderedElementsAre(Pair("a", Small{3}), Pair("c", Small{1}))));
  EXPECT_THAT(decode(parsed(R"({"v":{"b":{}}})")), Optional(UnorderedElementsAre()));
  EXPECT_THAT(decode(parsed(R"({"v":{}})")), Optional(UnorderedElementsAre()));
}

TEST(DecodeRecordDictionary, IsAbsentForAValueThatIsNoDictionary) {
  const auto decode = Decoder::decodeRecordDictionary<Small>("v");
  EXPECT_EQ(decode(parsed(R"({"v":{"a":{"n":3},"b":3}})")), std::nullopt);
  EXPECT_EQ(decode(parsed(R"({"v":{"a":{"n":3},"b":null}})")), std::nullopt);
  expectAbsentForOtherKinds(decode);
}

TEST(DecodeRecordArrayDictionary, DropsArraysOfWhichARecordFails) {
  const auto decode = Decoder::decodeRecordArrayDictionary<Small>("v");
  EXPECT_THAT(decode(parsed(R"({"v":{"a":[{"n":3},{"n":1}],"b":[{"n":3},{}],"c":[]}})")),
              Optional(UnorderedElementsAre(Pair("a", ElementsAre(Small{3}, Small{1})),
                                            Pair("c", ElementsAre()))));
  EXPECT_THAT(decode(parsed(R"({"v":{}})")), Optional(UnorderedElementsAre()));
}

TEST(DecodeRecordArrayDictionary, IsAbsentForAValueThatIsNoArrayOfDictionaries) {
  const auto decode = Decoder::decodeRecordArrayDictionary<Small>("v");
  EXPECT_EQ(decode(parsed(R"({"v":{"a":[{"n":3}],"b":{"n":3}}})")), std::nullopt);
  EXPECT_EQ(decode(parsed(R"({"v":{"a":[{"n":3}],"b":[{"n":3},3]}})")), std::nullopt);
  expectAbsentForOtherKinds(decode);
}

TEST(DecodeEnum, TakesAKnownRawText) {
  const auto decode = Decoder::decodeEnum<Color>("v");
  EXPECT_EQ(decode(parsed(R"({"v":"green"})")), Color::Green);
  EXPECT_EQ(decode(parsed(R"({"v":"Green"})")), std::nullopt);
  EXPECT_EQ(decode(parsed(R"({"v":""})")), std::nullopt);
  expectAbsentForOtherKinds(decode);
}

TEST(DecodeEnum, TakesAKnownRawNumber) {
  const auto decode = Decoder::decodeEnum<Level>("v");
  EXPECT_EQ(decode(parsed(R"({"v":10})")), Level::High);
  EXPECT_EQ(decode(parsed(R"({"v":2})")), std::nullopt);
  EXPECT_EQ(decode(parsed(R"({"v":1.5})")), std::nullopt);
  EXPECT_EQ(decode(parsed(R"({"v":4294967297})")), std::nullopt);
  expectAbsentForOtherKinds(decode, {"number"});
}

TEST(DecodeEnumArray, TakesAllOrNone) {
  const auto decode = Decoder::decodeEnumArray<Color>("v");
  EXPECT_THAT(decode(parsed(R"({"v":["green","red","green"]})")),
              Optional(ElementsAre(Color::Green, Color::Red, Color::Green)));
  EXPECT_THAT(decode(parsed(R"({"v":[]})")), Optional(ElementsAre()));
  EXPECT_EQ(decode(parsed(R"({"v":["green","blue"]})")), std::nullopt);
  EXPECT_EQ(decode(parsed(R"({"v":["green",1]})")), std::nullopt);
  expectAbsentForOtherKinds(decode);
}

TEST(DecodeIntegers, ConvertNumbersAndBooleans) {
  const auto json = parsed(R"({"i":-1,"r":2.9,"b":true,"big":4294967301,"far":1e300})");
  EXPECT_EQ(Decoder::decodeInt32("i")(json), -1);
  EXPECT_EQ(Decoder::decodeUInt32("i")(json), 4294967295U);
  EXPECT_EQ(Decoder::decodeInt64("i")(json), -1);
  EXPECT_EQ(Decoder::decodeUInt64("i")(json), 18446744073709551615U);
  EXPECT_EQ(Decoder::decodeInt32("r")(json), 2);
  EXPECT_EQ(Decoder::decodeUInt64("b")(json), 1U);
  EXPECT_EQ(Decoder::decodeInt32("big")(json), 5);
  EXPECT_EQ(Decoder::decodeUInt32("big")(json), 5U);
  EXPECT_EQ(Decoder::decodeInt64("big")(json), 4294967301);
  EXPECT_EQ(Decoder::decodeInt32("far")(json), 2147483647);
}

TEST(DecodeIntegers, AreAbsentForOtherKinds) {
  expectAbsentForOtherKinds(Decoder::decodeInt32("v"), {"number", "boolean"});
  expectAbsentForOtherKinds(Decoder::decodeUInt32("v"), {"number", "boolean"});
  expectAbsentForOtherKinds(Decoder::decodeInt64("v"), {"number", "boolean"});
  expectAbsentForOtherKinds(Decoder::decodeUInt64("v"), {"number", "boolean"});
}

TEST(DecodeIntegerArrays, ConvertEachElement) {
  const auto json = parsed(R"({"v":[-1,2.9,true,4294967301],"none":[]})");
  EXPECT_THAT(Decoder::decodeInt32Array("v")(json), Optional(ElementsAre(-1, 2, 1, 5)));
  EXPECT_THAT(Decoder::decodeUInt32Array("v")(json), Optional(ElementsAre(4294967295U, 2, 1, 5)));
  EXPECT_THAT(Decoder::decodeInt64Array("v")(json), Optional(ElementsAre(-1, 2, 1, 4294967301)));
  EXPECT_THAT(Decoder::decodeUInt64Array("v")(json),
              Optional(ElementsAre(18446744073709551615U, 2, 1, 4294967301U)));
  EXPECT_THAT(Decoder::decodeInt32Array("none")(json), Optional(ElementsAre()));
}

template <typename Decode>
void expectNumbersOnly(const Decode& decode) {
  EXPECT_TRUE(decode(parsed(R"({"v":[1]})")));
  EXPECT_FALSE(decode(parsed(R"({"v":[1,"1"]})")));
  EXPECT_FALSE(decode(parsed(R"({"v":[1,null]})")));
  expectAbsentForOtherKinds(decode);
}

TEST(DecodeIntegerArrays, AreAbsentForOneElementThatIsNoNumber) {
  expectNumbersOnly(Decoder::decodeInt32Array("v"));
  expectNumbersOnly(Decoder::decodeUInt32Array("v"));
  expectNumbersOnly(Decoder::decodeInt64Array("v"));
  expectNumbersOnly(Decoder::decodeUInt64Array("v"));
}

TEST(DecodeDate, ReadsIso8601UnlessToldOtherwise) {
  const InZone zone("Europe/Berlin");
  const auto decode = Decoder::decodeDate("v");
  EXPECT_EQ(unixTime(decode(parsed(R"({"v":"2018-03-05T14:07:09+01:00"})"))), 1520255229);
  EXPECT_FALSE(decode(parsed(R"({"v":"2018-03-05 14:07:09"})")));
  expectAbsentForOtherKinds(decode);
  const auto local = DateFormatter::forPattern("yyyy-MM-dd HH:mm:ss");
  EXPECT_EQ(unixTime(Decoder::decodeDate("v", *local)(parsed(R"({"v":"2018-03-05 14:07:09"})"))),
            1520255229);
}

TEST(DecodeDateArray, ReadsAllOrNone) {
  const auto decode = Decoder::decodeDateArray("v");
  const auto dates = decode(parsed(R"({"v":["2018-03-05T13:07:09Z","1970-01-01T00:00:00Z"]})"));
  ASSERT_TRUE(dates && dates->size() == 2);
  EXPECT_EQ(unixTime(dates->at(0)), 1520255229);
  EXPECT_EQ(unixTime(dates->at(1)), 0);
  EXPECT_TRUE(decode(parsed(R"({"v":[]})")).value().empty());
  EXPECT_FALSE(decode(parsed(R"({"v":["2018-03-05T13:07:09Z","today"]})")));
  EXPECT_FALSE(decode(parsed(R"({"v":["2018-03-05T13:07:09Z",0]})")));
  expectAbsentForOtherKinds(decode);
}

TEST(DecodeUrl, EncodesTheText) {
  const auto decode = Decoder::decodeUrl("v");
  EXPECT_EQ(decode(parsed(R"({"v":"http://h/a?b=c d\u00e9%20"})"))->absoluteString(),
            "http://h/a?b=c%20d%C3%A9%2520");
  EXPECT_EQ(decode(parsed(R"({"v":""})"))->absoluteString(), "");
  EXPECT_EQ(decode(JSON{{"v", "\xFF"}}), std::nullopt);
  expectAbsentForOtherKinds(decode, {"text"});
}

TEST(DecodeUrlArray, TakesEachTextAsItStands) {
  const auto decode = Decoder::decodeUrlArray("v");
  EXPECT_THAT(decode(parsed(R"({"v":["http://h/%20","x"]})")),
              Optional(ElementsAre(*Url::fromText("http://h/%20"), *Url::fromText("x"))));
  EXPECT_THAT(decode(parsed(R"({"v":[]})")), Optional(ElementsAre()));
  EXPECT_EQ(decode(parsed(R"({"v":["http://h/","a b"]})")), std::nullopt);
  EXPECT_EQ(decode(parsed(R"({"v":["http://h/",1]})")), std::nullopt);
  expectAbsentForOtherKinds(decode);
}

}  // namespace
}  // namespace Vastel_Connect

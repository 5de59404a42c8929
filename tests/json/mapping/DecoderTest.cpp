// Tests json/mapping/Decoder.h.
#include "json/mapping/Decoder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <type_traits>

#include "tests/json/mapping/Records.h"

namespace Vastel_Connect {
namespace {

using namespace Decoder;

/// A JSON text, and what is read where it stands.
template <typename T>
using Rows = std::map<std::string, std::optional<T>>;

/// What each function takes for no value, unless its rows say so: one of each kind.
constexpr const char* kKinds[] = {"null", "true", "1", R"("not it")", "[[]]", R"({"a":"x"})"};

/// Expects the function that `make` makes of a key path, and of a delimiter or none, to read what
/// the rows say, and nothing of another kind or that is missing, by copies of both.
template <typename T, typename Make>
void expectDecodes(Make make, std::type_identity_t<Rows<T>> rows) {
  for (const char* kind : kKinds) rows.emplace(kind, std::nullopt);
  keyPathDelimiter = "/";
  std::string path = "a/b";
  const auto programWide = make(path);
  keyPathDelimiter = ".";
  std::string delimiter = "/";
  const auto given = make(path, delimiter);
  // Written over where they stand, for whoever still looks there.
  path = "x.y";
  delimiter = ".";
  for (const auto& [value, expected] : rows) {
    SCOPED_TRACE(value);
    const JSON json = parsed(R"({"a":{"b":)" + value + R"(},"x":1})");
    EXPECT_TRUE(programWide(json) == expected);
    EXPECT_TRUE(given(json) == expected);
    EXPECT_TRUE(make("a.b")(json) == expected);
    EXPECT_FALSE(make("a.b", "/")(json));
    EXPECT_FALSE(make("A.b")(json));
  }
}

TEST(Decode, ReadsAValueOfItsType) {
  expectDecodes<int>([](auto... given) { return decode<int>(given...); }, {{"1", 1}});
  expectDecodes<bool>([](auto... given) { return decode<bool>(given...); },
                      {{"true", true}, {"false", false}});
  expectDecodes<std::string>([](auto... given) { return decode<std::string>(given...); },
                             {{R"("not it")", "not it"}, {R"("")", ""}});
  expectDecodes<std::vector<int>>([](auto... given) { return decode<std::vector<int>>(given...); },
                                  {{"[2,1]", std::vector{2, 1}}, {"[]", std::vector<int>{}}});
  EXPECT_EQ(decode<JsonValue>("v")(parsed(R"({"v":null})")), JsonValue(nullptr));
}

TEST(Decode, FollowsAKeyPathIntoDictionariesOnly) {
  const auto json = parsed(R"({"a":{"b":{"c":7}},"x":[{"b":7}],"a/b":8})");
  EXPECT_EQ(decode<int>("a.b.c")(json), 7);
  EXPECT_EQ(decode<int>("a/b")(json), 8);
  for (const char* path : {"a.b.d", "a.b.c.d", "x.b", "x.0.b"}) {
    EXPECT_EQ(decode<int>(path)(json), std::nullopt) << path;
  }
}

using Smalls = std::vector<Small>;

TEST(DecodeRecord, BuildsTheRecord) {
  expectDecodes<Small>([](auto... given) { return decodeRecord<Small>(given...); },
                       {{R"({"n":3})", Small{3}}, {R"({"n":"3"})", std::nullopt}});
}

TEST(DecodeRecordArray, BuildsAllRecordsOrNone) {
  expectDecodes<Smalls>([](auto... given) { return decodeRecordArray<Small>(given...); },
                        {{R"([{"n":3},{"n":1}])", Smalls{{3}, {1}}},
                         {"[]", Smalls{}},
                         {R"([{"n":3},{}])", std::nullopt},
                         {R"([{"n":3},3])", std::nullopt}});
}

TEST(DecodeRecordDictionary, DropsARecordThatFailsAndIsAbsentForAValueThatIsNoDictionary) {
  using Records = Dictionary<Small>;
  expectDecodes<Records>([](auto... given) { return decodeRecordDictionary<Small>(given...); },
                         {{R"({"a":{"n":3},"b":{},"c":{"n":1}})", Records{{"a", {3}}, {"c", {1}}}},
                          {R"({"b":{}})", Records{}},
                          {"{}", Records{}},
                          {R"({"a":{"n":3},"b":3})", std::nullopt},
                          {R"({"a":{"n":3},"b":null})", std::nullopt}});
}

TEST(DecodeRecordArrayDictionary, DropsAnArrayThatFailsAndIsAbsentForOneThatIsNotOfDictionaries) {
  using Records = Dictionary<Smalls>;
  expectDecodes<Records>([](auto... given) { return decodeRecordArrayDictionary<Small>(given...); },
                         {{R"({"a":[{"n":3},{"n":1}],"b":[{"n":3},{}],"c":[]})",
                           Records{{"a", {{3}, {1}}}, {"c", Smalls{}}}},
                          {"{}", Records{}},
                          {R"({"a":[{"n":3}],"b":{"n":3}})", std::nullopt},
                          {R"({"a":[{"n":3}],"b":[{"n":3},3]})", std::nullopt}});
}

TEST(DecodeEnum, TakesAKnownRawValue) {
  expectDecodes<Color>(
      [](auto... given) { return decodeEnum<Color>(given...); },
      {{R"("green")", Color::Green}, {R"("Green")", std::nullopt}, {R"("")", std::nullopt}});
  expectDecodes<Level>([](auto... given) { return decodeEnum<Level>(given...); },
                       {{"1", Level::Low},
                        {"10", Level::High},
                        {"2", std::nullopt},
                        {"1.5", std::nullopt},
                        {"4294967297", std::nullopt}});
}

TEST(DecodeEnumArray, TakesAllOrNone) {
  using Colors = std::vector<Color>;
  expectDecodes<Colors>([](auto... given) { return decodeEnumArray<Color>(given...); },
                        {{R"(["green","red"])", Colors{Color::Green, Color::Red}},
                         {"[]", Colors{}},
                         {R"(["green","blue"])", std::nullopt},
                         {R"(["green",1])", std::nullopt}});
}

/// -1 is converted to the highest value of a type without a sign; the last is 2^32 + 5.
template <typename T, typename Make>
void expectDecodesIntegers(Make make) {
  const auto any = static_cast<T>(4294967301);
  expectDecodes<T>(
      make, {{"-1", static_cast<T>(-1)}, {"1", 1}, {"2.9", 2}, {"true", 1}, {"4294967301", any}});
}

template <typename T, typename Make>
void expectDecodesIntegerArrays(Make make) {
  using Array = std::vector<T>;
  expectDecodes<Array>(make, {{"[-1,2.9,true,4294967301]",
                               Array{static_cast<T>(-1), 2, 1, static_cast<T>(4294967301)}},
                              {"[]", Array{}},
                              {R"([1,"1"])", std::nullopt},
                              {"[1,null]", std::nullopt}});
}

TEST(DecodeIntegers, ConvertNumbersAndBooleansAlone) {
  expectDecodesIntegers<std::int32_t>([](auto... given) { return decodeInt32(given...); });
  expectDecodesIntegers<std::uint32_t>([](auto... given) { return decodeUInt32(given...); });
  expectDecodesIntegers<std::int64_t>([](auto... given) { return decodeInt64(given...); });
  expectDecodesIntegers<std::uint64_t>([](auto... given) { return decodeUInt64(given...); });
}

TEST(DecodeIntegerArrays, ConvertAllElementsOrNone) {
  expectDecodesIntegerArrays<std::int32_t>(
      [](auto... given) { return decodeInt32Array(given...); });
  expectDecodesIntegerArrays<std::uint32_t>(
      [](auto... given) { return decodeUInt32Array(given...); });
  expectDecodesIntegerArrays<std::int64_t>(
      [](auto... given) { return decodeInt64Array(given...); });
  expectDecodesIntegerArrays<std::uint64_t>(
      [](auto... given) { return decodeUInt64Array(given...); });
}

const Date kDate = Date(std::chrono::seconds(1520255229));

TEST(DecodeDate, ReadsIso8601) {
  expectDecodes<Date>(
      [](std::string_view path, auto... given) {
        if constexpr (sizeof...(given) == 0) return decodeDate(path);
        return decodeDate(path, sharedIso8601DateFormatter(), given...);
      },
      {{R"("2018-03-05T14:07:09+01:00")", kDate}, {R"("2018-03-05 14:07:09")", std::nullopt}});
}

TEST(DecodeDateArray, ReadsAllOrNone) {
  using Dates = std::vector<Date>;
  expectDecodes<Dates>(
      [](std::string_view path, auto... given) {
        if constexpr (sizeof...(given) == 0) return decodeDateArray(path);
        return decodeDateArray(path, sharedIso8601DateFormatter(), given...);
      },
      {{R"(["2018-03-05T13:07:09Z","1970-01-01T00:00:00Z"])", Dates{kDate, Date()}},
       {"[]", Dates{}},
       {R"(["2018-03-05T13:07:09Z","today"])", std::nullopt},
       {R"(["2018-03-05T13:07:09Z",0])", std::nullopt}});
}

TEST(DecodeDate, KeepsACopyOfTheFormatterThatItIsGiven) {
  auto formatter = *DateFormatter::forPattern("yyyy Z");
  const auto decode = decodeDate("v", formatter);
  const auto decodeArray = decodeDateArray("v", formatter);
  formatter = *DateFormatter::forPattern("'other'");
  EXPECT_TRUE(decode(parsed(R"({"v":"1970 +0000"})")) == Date());
  EXPECT_TRUE(decodeArray(parsed(R"({"v":["1970 +0000"]})")) == std::vector{Date()});
}

Url url(std::string_view text) {
  return *Url::fromText(text);
}

TEST(DecodeUrl, EncodesTheText) {
  expectDecodes<Url>([](auto... given) { return decodeUrl(given...); },
                     {{R"("not it")", url("not%20it")},
                      {R"("http://h/a?b=c d\u00e9%20")", url("http://h/a?b=c%20d%C3%A9%2520")},
                      {R"("")", url("")}});
  EXPECT_EQ(decodeUrl("v")(JSON{{"v", "\xFF"}}), std::nullopt);
}

TEST(DecodeUrlArray, TakesEachTextAsItStands) {
  using Urls = std::vector<Url>;
  expectDecodes<Urls>([](auto... given) { return decodeUrlArray(given...); },
                      {{R"(["http://h/%20","x"])", Urls{url("http://h/%20"), url("x")}},
                       {"[]", Urls{}},
                       {R"(["http://h/","a b"])", std::nullopt},
                       {R"(["http://h/",1])", std::nullopt}});
}

}  // namespace
}  // namespace Vastel_Connect

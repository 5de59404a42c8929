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

/// The type of what a function reads that `Make` makes.
template <typename Make>
using ReadBy = typename std::invoke_result_t<Make, std::string>::result_type::value_type;

/// What each function takes for no value, unless its rows say so: one of each kind.
constexpr const char* kKinds[] = {"null", "true", "1", R"("not it")", "[[]]", R"({"a":"x"})"};

/// Expects the function that `make` makes of a key path, and of a delimiter or none, to read what
/// the rows say, and nothing of another kind or that is missing, by copies of both.
template <typename Make>
void expectDecodes(Make make, Rows<ReadBy<Make>> rows) {
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
    EXPECT_FALSE(make("A.b")(json));
  }
}

/// Expects the same of `make`, and `makeArray` to read arrays of what the rows say: all of it, or
/// nothing where one element is no value.
template <typename Make, typename MakeArray>
void expectDecodesAloneAndInArrays(Make make, MakeArray makeArray, Rows<ReadBy<Make>> rows) {
  for (const char* kind : kKinds) rows.emplace(kind, std::nullopt);
  std::string texts;
  ReadBy<MakeArray> values;
  Rows<ReadBy<MakeArray>> arrays = {{"[]", values}};
  for (const auto& [text, value] : rows) {
    if (!value) continue;
    texts.append(values.empty() ? "" : ",").append(text);
    values.push_back(*value);
  }
  arrays["[" + texts + "]"] = values;
  for (const auto& [text, value] : rows) {
    if (!value) arrays["[" + texts + "," + text + "]"] = std::nullopt;
  }
  expectDecodes(make, rows);
  expectDecodes(makeArray, arrays);
}

TEST(Decode, ReadsAValueOfItsType) {
  expectDecodes([](auto... given) { return decode<int>(given...); }, {{"1", 1}});
  EXPECT_EQ(decode<JsonValue>("v")(parsed(R"({"v":null})")), JsonValue(nullptr));
}

TEST(DecodeRecord, BuildsTheRecordAndInArraysAllOrNone) {
  expectDecodesAloneAndInArrays(
      [](auto... given) { return decodeRecord<Small>(given...); },
      [](auto... given) { return decodeRecordArray<Small>(given...); },
      {{R"({"n":3})", Small{3}}, {R"({"n":1})", Small{1}}, {R"({"n":"3"})", std::nullopt}});
}

using Smalls = std::vector<Small>;

TEST(DecodeRecordDictionary, DropsARecordThatFailsAndIsAbsentForAValueThatIsNoDictionary) {
  using Records = Dictionary<Small>;
  expectDecodes([](auto... given) { return decodeRecordDictionary<Small>(given...); },
                {{R"({"a":{"n":3},"b":{},"c":{"n":1}})", Records{{"a", {3}}, {"c", {1}}}},
                 {"{}", Records{}},
                 {R"({"a":{"n":3},"b":3})", std::nullopt},
                 {R"({"a":{"n":3},"b":null})", std::nullopt}});
}

TEST(DecodeRecordArrayDictionary, DropsAnArrayThatFailsAndIsAbsentForOneThatIsNotOfDictionaries) {
  using Records = Dictionary<Smalls>;
  expectDecodes([](auto... given) { return decodeRecordArrayDictionary<Small>(given...); },
                {{R"({"a":[{"n":3},{"n":1}],"b":[{"n":3},{}],"c":[]})",
                  Records{{"a", {{3}, {1}}}, {"c", Smalls{}}}},
                 {"{}", Records{}},
                 {R"({"a":[{"n":3}],"b":{"n":3}})", std::nullopt},
                 {R"({"a":[{"n":3}],"b":[{"n":3},3]})", std::nullopt}});
}

TEST(DecodeEnum, TakesAKnownRawValueAndInArraysAllOrNone) {
  expectDecodesAloneAndInArrays([](auto... given) { return decodeEnum<Color>(given...); },
                                [](auto... given) { return decodeEnumArray<Color>(given...); },
                                {{R"("green")", Color::Green},
                                 {R"("red")", Color::Red},
                                 {R"("Green")", std::nullopt},
                                 {R"("")", std::nullopt}});
  expectDecodes([](auto... given) { return decodeEnum<Level>(given...); },
                {{"1", Level::Low},
                 {"10", Level::High},
                 {"2", std::nullopt},
                 {"1.5", std::nullopt},
                 {"4294967297", std::nullopt}});
}

/// -1 is converted to the highest value of a type without a sign; the last is 2^32 + 5.
template <typename Make, typename MakeArray>
void expectDecodesIntegers(Make make, MakeArray makeArray) {
  using T = ReadBy<Make>;
  expectDecodesAloneAndInArrays(make, makeArray,
                                {{"-1", static_cast<T>(-1)},
                                 {"1", 1},
                                 {"2.9", 2},
                                 {"true", 1},
                                 {"4294967301", static_cast<T>(4294967301)}});
}

TEST(DecodeIntegers, ConvertNumbersAndBooleansAloneAndInArraysAllOrNone) {
  expectDecodesIntegers([](auto... given) { return decodeInt32(given...); },
                        [](auto... given) { return decodeInt32Array(given...); });
  expectDecodesIntegers([](auto... given) { return decodeUInt32(given...); },
                        [](auto... given) { return decodeUInt32Array(given...); });
  expectDecodesIntegers([](auto... given) { return decodeInt64(given...); },
                        [](auto... given) { return decodeInt64Array(given...); });
  expectDecodesIntegers([](auto... given) { return decodeUInt64(given...); },
                        [](auto... given) { return decodeUInt64Array(given...); });
}

TEST(DecodeDate, ReadsIso8601AndInArraysAllOrNone) {
  const Date date(std::chrono::seconds(1520255229));
  expectDecodesAloneAndInArrays(
      [](std::string_view path, auto... given) {
        return decodeDate(path, sharedIso8601DateFormatter(), given...);
      },
      [](std::string_view path, auto... given) {
        return decodeDateArray(path, sharedIso8601DateFormatter(), given...);
      },
      {{R"("2018-03-05T14:07:09+01:00")", date},
       {R"("1970-01-01T00:00:00Z")", Date()},
       {R"("2018-03-05 14:07:09")", std::nullopt}});
  EXPECT_TRUE(decodeDate("v")(parsed(R"({"v":"2018-03-05T13:07:09Z"})")) == date);
  EXPECT_TRUE(decodeDateArray("v")(parsed(R"({"v":["2018-03-05T13:07:09Z"]})")) ==
              std::vector{date});
}

TEST(DecodeDate, KeepsACopyOfTheFormatterThatItIsGiven) {
  auto formatter = *DateFormatter::forPattern("yyyy Z");
  const auto decode = decodeDate("v", formatter);
  const auto decodeArray = decodeDateArray("v", formatter);
  formatter = *DateFormatter::forPattern("'other'");
  EXPECT_TRUE(decode(parsed(R"({"v":"1970 +0000"})")) == Date());
  EXPECT_TRUE(decodeArray(parsed(R"({"v":["1970 +0000"]})")) == std::vector{Date()});
}

TEST(DecodeUrl, EncodesATextAndTakesThoseOfAnArrayAsTheyStand) {
  const auto url = [](std::string_view text) { return *Url::fromText(text); };
  expectDecodes([](auto... given) { return decodeUrl(given...); },
                {{R"("not it")", url("not%20it")},
                 {R"("http://h/a?b=c d\u00e9%20")", url("http://h/a?b=c%20d%C3%A9%2520")},
                 {R"("")", url("")}});
  EXPECT_EQ(decodeUrl("v")(JSON{{"v", "\xFF"}}), std::nullopt);
  expectDecodes([](auto... given) { return decodeUrlArray(given...); },
                {{R"(["http://h/%20","x"])", {{url("http://h/%20"), url("x")}}},
                 {"[]", std::vector<Url>{}},
                 {R"(["http://h/","a b"])", std::nullopt},
                 {R"(["http://h/",1])", std::nullopt}});
}

}  // namespace
}  // namespace Vastel_Connect

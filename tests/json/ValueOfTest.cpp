#include "json/ValueOf.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "json/JsonText.h"

namespace Vastel_Connect {
namespace {

static_assert(JsonType<bool> && JsonType<int> && JsonType<std::uint8_t> && JsonType<std::uint64_t>);
static_assert(JsonType<double> && JsonType<std::string> && JsonType<NumberObject>);
static_assert(JsonType<JSON> && JsonType<JsonArray> && JsonType<JsonValue>);
static_assert(JsonType<std::vector<std::vector<bool>>> && JsonType<Dictionary<std::vector<int>>>);
static_assert(!JsonType<char> && !JsonType<wchar_t> && !JsonType<char16_t> && !JsonType<float>);
static_assert(!JsonType<const char*> && !JsonType<std::string_view> && !JsonType<void*>);
static_assert(!JsonType<std::vector<char>> && !JsonType<std::optional<int>>);

/// The value that a JSON text stands for.
JsonValue json(std::string_view text) {
  return parseJsonText("[" + std::string(text) + "]")->get_array().at(0);
}

using Texts = std::vector<std::string>;

/// The texts of which valueOf<T> makes a value.
template <typename T>
Texts taken(Texts texts) {
  std::erase_if(texts, [](const std::string& text) { return !valueOf<T>(json(text)); });
  return texts;
}

const Texts kKinds = {"null", "true", "2", "2.0", "2.5", R"("2")", "[2]", R"({"a":2})"};

TEST(ValueOf, TakesOnlyValuesOfTheTypesKind) {
  EXPECT_EQ(taken<bool>(kKinds), (Texts{"true"}));
  EXPECT_EQ(taken<int>(kKinds), (Texts{"2", "2.0"}));
  EXPECT_EQ(taken<std::uint64_t>(kKinds), (Texts{"2", "2.0"}));
  EXPECT_EQ(taken<double>(kKinds), (Texts{"2", "2.0", "2.5"}));
  EXPECT_EQ(taken<NumberObject>(kKinds), (Texts{"true", "2", "2.0", "2.5"}));
  EXPECT_EQ(taken<std::string>(kKinds), (Texts{R"("2")"}));
  EXPECT_EQ(taken<JSON>(kKinds), (Texts{R"({"a":2})"}));
  EXPECT_EQ(taken<JsonArray>(kKinds), (Texts{"[2]"}));
  EXPECT_EQ(taken<JsonValue>(kKinds), kKinds);
  EXPECT_EQ(taken<std::vector<int>>(kKinds), (Texts{"[2]"}));
  EXPECT_EQ(taken<Dictionary<int>>(kKinds), (Texts{R"({"a":2})"}));
}

TEST(ValueOf, GivesTheValue) {
  EXPECT_EQ(valueOf<bool>(json("false")), false);
  EXPECT_EQ(valueOf<int>(json("-7")), -7);
  EXPECT_EQ(valueOf<double>(json("2.5")), 2.5);
  EXPECT_EQ(valueOf<std::string>(json(R"("")")), "");
  EXPECT_EQ(valueOf<JsonValue>(json("null")), JsonValue(nullptr));
  EXPECT_EQ(valueOf<std::vector<bool>>(json("[true,false]")), (std::vector{true, false}));
  EXPECT_EQ(valueOf<Dictionary<std::string>>(json(R"({"b":"2","a":"1"})")),
            (Dictionary<std::string>{{"a", "1"}, {"b", "2"}}));
}

TEST(ValueOf, TakesIntegersThatTheTypeHolds) {
  EXPECT_EQ(taken<std::int8_t>({"-129", "-128", "127", "128", "1.5", "-0.0"}),
            (Texts{"-128", "127", "-0.0"}));
  EXPECT_EQ(taken<std::uint16_t>({"-1", "0", "65535", "65536"}), (Texts{"0", "65535"}));
  EXPECT_EQ(
      taken<std::int64_t>({"-9223372036854775808", "9223372036854775807", "9223372036854775808",
                           "1e18", "-9.223372036854775808e18", "9.223372036854775808e18", "1e300"}),
      (Texts{"-9223372036854775808", "9223372036854775807", "1e18", "-9.223372036854775808e18"}));
  EXPECT_EQ(taken<std::uint64_t>({"18446744073709551615", "1.8446744073709549568e19",
                                  "18446744073709551616", "-1", "-1.0"}),
            (Texts{"18446744073709551615", "1.8446744073709549568e19"}));
  EXPECT_EQ(valueOf<int>(JsonValue(std::uint64_t{5})), 5);
  EXPECT_EQ(valueOf<int>(JsonValue(std::nan(""))), std::nullopt);
}

TEST(ValueOf, TakesRealsThatADoubleHolds) {
  EXPECT_EQ(taken<double>({"9007199254740992", "9007199254740993", "9223372036854775807",
                           "9223372036854775808", "18446744073709551615", "0.1"}),
            (Texts{"9007199254740992", "9223372036854775808", "0.1"}));
}

TEST(ValueOf, IsAbsentAsAWholeForOneElementOfAnotherKind) {
  EXPECT_EQ(valueOf<std::vector<int>>(json("[]")), std::vector<int>{});
  EXPECT_EQ(valueOf<std::vector<int>>(json(R"([1,"2",3])")), std::nullopt);
  EXPECT_EQ(valueOf<std::vector<std::string>>(json(R"(["1",null])")), std::nullopt);
  EXPECT_EQ(valueOf<Dictionary<std::string>>(json("{}")), Dictionary<std::string>{});
  EXPECT_EQ(valueOf<Dictionary<std::string>>(json(R"({"a":"1","b":2})")), std::nullopt);
  EXPECT_EQ(valueOf<Dictionary<std::vector<int>>>(json(R"({"a":[1],"b":[1.5]})")), std::nullopt);
}

template <typename T>
std::string written(const T& value) {
  return boost::json::serialize(jsonValueOf(value));
}

TEST(JsonValueOf, WritesTheValueAsItIs) {
  EXPECT_EQ(written(true), "true");
  EXPECT_EQ(written(std::int8_t{-5}), "-5");
  EXPECT_EQ(written(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
  EXPECT_EQ(written(0.5), "5E-1");
  EXPECT_EQ(written(NumberObject(true)), "true");
  EXPECT_EQ(written(NumberObject(3.0)), "3E0");
  EXPECT_EQ(written(std::string("a\"b")), R"("a\"b")");
  EXPECT_EQ(written(JSON{{"a", 1}}), R"({"a":1})");
  EXPECT_EQ(written(JsonArray{1, "b"}), R"([1,"b"])");
  EXPECT_EQ(written(JsonValue(nullptr)), "null");
  EXPECT_EQ(written(std::vector{true, false}), "[true,false]");
  EXPECT_EQ(written(std::vector<std::vector<int>>{{1}, {}}), "[[1],[]]");
  EXPECT_EQ(written(Dictionary<int>{{"b", 2}, {"a", 1}}), R"({"a":1,"b":2})");
}

}  // namespace
}  // namespace Vastel_Connect

#include <gtest/gtest.h>

#include "json/ArrayTransform.h"
#include "json/Json.h"
#include "json/ValueOf.h"
#include "json/mapping/DictionaryTransform.h"

namespace Vastel_Connect {
namespace {

std::optional<int> half(int number) {
  return number % 2 == 0 ? std::optional(number / 2) : std::nullopt;
}

TEST(TransformArray, KeepsTheOrder) {
  EXPECT_EQ(transformArray<std::vector<int>>(std::vector{6, 2, 4}, half), (std::vector{3, 1, 2}));
  EXPECT_EQ(transformArray<std::vector<int>>(std::vector<int>{}, half), std::vector<int>{});
}

TEST(TransformArray, IsAbsentAsAWholeForOneElementWithoutResult) {
  EXPECT_EQ(transformArray<std::vector<int>>(std::vector{6, 3, 4}, half), std::nullopt);
}

TEST(TransformDictionary, DropsEntriesWithoutResult) {
  const Dictionary<int> numbers = {{"a", 2}, {"b", 3}, {"c", 4}};
  const auto halves = transformDictionary<Dictionary<int>>(
      numbers,
      [](const std::string& key, int number) -> std::optional<std::pair<std::string, int>> {
        const auto result = half(number);
        if (!result) return std::nullopt;
        return std::pair("half of " + key, *result);
      });
  EXPECT_EQ(halves, (Dictionary<int>{{"half of a", 1}, {"half of c", 2}}));
}

TEST(TransformDictionary, LetsTheLastOfARepeatedKeyWin) {
  // Neither the order of the keys nor that of the values decides, but that of the insertions.
  JSON json;
  json["b"] = 1;
  json["c"] = 3;
  json["a"] = 2;
  const auto underOneKey = [](std::string_view, const JsonValue& value) {
    return std::optional(std::pair(std::string("same"), value));
  };
  EXPECT_EQ(transformDictionary<JSON>(json, underOneKey), (JSON{{"same", 2}}));
  EXPECT_EQ(transformDictionary<Dictionary<JsonValue>>(json, underOneKey),
            (Dictionary<JsonValue>{{"same", 2}}));
}

TEST(TransformDictionary, GivesAnEmptyDictionaryForOne) {
  EXPECT_EQ(transformDictionary<JSON>(JSON{},
                                      [](std::string_view, const JsonValue&) {
                                        return std::optional<std::pair<std::string, JsonValue>>();
                                      }),
            JSON{});
}

}  // namespace
}  // namespace Vastel_Connect

#include <gtest/gtest.h>

#include "json/ArrayTransform.h"
#include "json/Json.h"
#include "json/ValueOf.h"
#include "json/mapping/DictionaryTransform.h"

namespace Vastel_Connect {
namespace {

using Numbers = std::vector<int>;

TEST(TransformArray, KeepsTheOrderAndIsAbsentAsAWholeForOneElementWithoutResult) {
  const auto halves = [](const Numbers& numbers) {
    return transformArray<Numbers>(numbers, [](int number) {
      return number % 2 == 0 ? std::optional(number / 2) : std::nullopt;
    });
  };
  EXPECT_EQ(halves({6, 2, 4}), (Numbers{3, 1, 2}));
  EXPECT_EQ(halves({}), Numbers{});
  EXPECT_EQ(halves({6, 3, 4}), std::nullopt);
}

TEST(TransformDictionary, DropsEntriesWithoutResultAndLetsTheLastOfARepeatedKeyWin) {
  // Neither the order of the keys nor that of the values decides, but that of the insertions.
  JSON json;
  json["b"] = 1;
  json["c"] = 3;
  json["a"] = 2;
  json["none"] = nullptr;
  const auto underOneKey = [](std::string_view, const JsonValue& value) {
    return value.is_null() ? std::nullopt : std::optional(std::pair(std::string("same"), value));
  };
  EXPECT_EQ(transformDictionary<JSON>(json, underOneKey), (JSON{{"same", 2}}));
  EXPECT_EQ(transformDictionary<Dictionary<JsonValue>>(json, underOneKey),
            (Dictionary<JsonValue>{{"same", 2}}));
  EXPECT_EQ(transformDictionary<JSON>(JSON{{"none", nullptr}}, underOneKey), JSON{});
}

}  // namespace
}  // namespace Vastel_Connect

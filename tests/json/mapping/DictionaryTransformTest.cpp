#include "json/mapping/DictionaryTransform.h"

#include <gtest/gtest.h>

#include "json/Json.h"

namespace Vastel_Connect {
namespace {

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
  EXPECT_EQ(transformDictionary<JSON>(JSON{{"none", nullptr}}, underOneKey), JSON{});
}

}  // namespace
}  // namespace Vastel_Connect

#include "json/mapping/JoinJson.h"

#include <gtest/gtest.h>

#include "tests/json/mapping/Records.h"

namespace Vastel_Connect {
namespace {

/// The dictionaries of a JSON array joined; a null stands for an absent one.
std::string joined(std::string_view texts) {
  std::vector<std::optional<JSON>> dictionaries;
  const auto document = parseJsonText(texts);
  for (const JsonValue& each : document->get_array()) {
    dictionaries.push_back(each.is_object() ? std::optional(each.get_object()) : std::nullopt);
  }
  return *writeJsonText(Encoder::joinJson(std::move(dictionaries)));
}

TEST(JoinJson, StoresEveryEntryInOrderUnderItsKeyPath) {
  const std::pair<const char*, const char*> rows[] = {
      {"[null,{}]", "{}"},
      {R"([null,{"b":1,"a":2},null,{"c":3}])", R"({"b":1,"a":2,"c":3})"},
      {R"([{"a.b.c":1}])", R"({"a":{"b":{"c":1}}})"},
      {R"([{"":1}])", R"({"":1})"},
      {R"([{".":1}])", R"({"":{"":1}})"},
      {R"([{"a..b":1}])", R"({"a":{"":{"b":1}}})"},
      // A dictionary that is there is gone on with.
      {R"([{"a.b":1},{"a.c":2},{"a.d.e":3}])", R"({"a":{"b":1,"c":2,"d":{"e":3}}})"},
      {R"([{"a":{"b":1}},{"a.c":2}])", R"({"a":{"b":1,"c":2}})"},
      // The keys of one that is stored stay whole.
      {R"([{"a":{"b.c":1}}])", R"({"a":{"b.c":1}})"},
      // An earlier value is replaced, and so is what is no dictionary on the way.
      {R"([{"a":1},{"a":"x"}])", R"({"a":"x"})"},
      {R"([{"a.b":1},{"a.b":null}])", R"({"a":{"b":null}})"},
      {R"([{"a.b":1},{"a":2}])", R"({"a":2})"},
      // A dictionary is stored, not merged.
      {R"([{"a.b":1},{"a":{"c":2}}])", R"({"a":{"c":2}})"},
      {R"([{"a":1},{"a.b":2}])", R"({"a":{"b":2}})"},
      {R"([{"a":[{"b":1}]},{"a.b":2}])", R"({"a":{"b":2}})"},
      {R"([{"x":{"a":"1","c":3}},{"x.a.b":2}])", R"({"x":{"a":{"b":2},"c":3}})"},
  };
  for (const auto& [texts, expected] : rows) EXPECT_EQ(joined(texts), expected);
}

TEST(JoinJson, SplitsAtTheDelimiterOfTheTimeOfTheCall) {
  const JSON json = {{"a.b/c", 1}};
  EXPECT_EQ(Encoder::joinJson({json}, "/"), parsed(R"({"a.b":{"c":1}})"));
  EXPECT_EQ(Encoder::joinJson({json}, ""), json);
  keyPathDelimiter = "/";
  EXPECT_EQ(Encoder::joinJson({json}), parsed(R"({"a.b":{"c":1}})"));
  keyPathDelimiter = ".";
  EXPECT_EQ(Encoder::joinJson({json}), parsed(R"({"a":{"b/c":1}})"));
}

}  // namespace
}  // namespace Vastel_Connect

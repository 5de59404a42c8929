// Tests json/KeyPath.h.
#include "json/KeyPath.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/platform/RecordingHost.h"

namespace Vastel_Connect {
namespace {

using testing::ElementsAre;

class KeyPath : public WithRecordingHost<testing::Test> {};

const JSON kRequest = {
    {"ScriptType", "CSD"}, {"Outer", {{"Inner", 7}, {"Null", nullptr}, {"", "inner empty"}}},
    {"Array", {1, 2, 3}},  {"Text", "text"},
    {"Number", 5},         {"Null", nullptr},
    {"", "empty key"},
};

TEST_F(KeyPath, FindsValuesInDictionariesOnlyAndPrintsNothing) {
  const std::pair<const char*, JsonValue> rows[] = {
      {"ScriptType", "CSD"},     {"Outer.Inner", 7}, {"Outer.Null", nullptr},
      {"Outer.", "inner empty"}, {"", "empty key"},
  };
  for (const auto& [path, value] : rows) {
    const JsonValue* found = valueForKeyPath(kRequest, path);
    ASSERT_NE(found, nullptr) << path;
    EXPECT_EQ(*found, value) << path;
  }
  for (const char* path :
       {"scripttype", " ScriptType", "Array.0", "Array.Inner", "Text.Inner", "Number.Inner",
        "Null.Inner", "Missing.Inner", "Outer.Missing", "Outer.Inner.Deeper"}) {
    EXPECT_EQ(valueForKeyPath(kRequest, path), nullptr) << path;
  }
  EXPECT_EQ(valueForKeyPath({}, ""), nullptr);
  EXPECT_THAT(host.events(), ElementsAre());
}

TEST_F(KeyPath, TakesTheDelimiterOfTheMomentOfTheCall) {
  keyPathDelimiter = "/";
  const JsonValue* found = valueForKeyPath(kRequest, "Outer/Inner");
  const JsonValue* missing = valueForKeyPath(kRequest, "Outer.Inner");
  JSON json;
  setValueForKeyPath(json, "a/b", 1);
  keyPathDelimiter = ".";
  EXPECT_TRUE(found != nullptr && missing == nullptr);
  EXPECT_EQ(json, JSON({{"a", {{"b", 1}}}}));
}

TEST_F(KeyPath, PrintsTheDiagnosticLineWithoutAnyKey) {
  JSON json;
  EXPECT_EQ(valueForKeys(kRequest, {}, "a.b"), nullptr);
  setValueForKeys(json, {}, "a", 1);
  EXPECT_EQ(json, JSON());
  EXPECT_THAT(host.events(),
              ElementsAre("print: [Gloss] Unable to use keyPath 'a.b' as key on type: String",
                          "print: [Gloss] Unable to use keyPath 'a' as key on type: String"));
}

}  // namespace
}  // namespace Vastel_Connect

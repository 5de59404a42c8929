// Tests json/KeyPath.h.
#include "json/KeyPath.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/platform/RecordingHost.h"

namespace Vastel_Connect {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using ValueForKeyPath = WithRecordingHost<testing::Test>;
using SetValueForKeyPath = WithRecordingHost<testing::Test>;

const JSON kRequest = {
    {"ScriptType", "CSD"}, {"Outer", {{"Inner", 7}, {"Null", nullptr}, {"", "inner empty"}}},
    {"Array", {1, 2, 3}},  {"Text", "text"},
    {"Number", 5},         {"Null", nullptr},
    {"", "empty key"},
};

TEST_F(ValueForKeyPath, FindsAKeyAndPrintsNothing) {
  EXPECT_EQ(*valueForKeyPath(kRequest, "ScriptType"), "CSD");
  EXPECT_EQ(valueForKeyPath(kRequest, "scripttype"), nullptr);
  EXPECT_EQ(valueForKeyPath(kRequest, " ScriptType"), nullptr);
  EXPECT_EQ(valueForKeyPath({}, "ScriptType"), nullptr);
  EXPECT_THAT(host.events(), IsEmpty());
}

TEST_F(ValueForKeyPath, WalksIntoDictionariesOnly) {
  EXPECT_EQ(*valueForKeyPath(kRequest, "Outer.Inner"), 7);
  for (const char* path : {"Array.0", "Array.Inner", "Text.Inner", "Number.Inner", "Null.Inner",
                           "Missing.Inner", "Outer.Missing", "Outer.Inner.Deeper"}) {
    EXPECT_EQ(valueForKeyPath(kRequest, path), nullptr) << path;
  }
}

TEST_F(ValueForKeyPath, FindsANullAsAValue) {
  const JsonValue* value = valueForKeyPath(kRequest, "Outer.Null");
  ASSERT_NE(value, nullptr);
  EXPECT_TRUE(value->is_null());
  EXPECT_EQ(value->if_string(), nullptr);
}

TEST_F(ValueForKeyPath, LooksUpTheEmptyKeyForTheEmptyPath) {
  EXPECT_EQ(*valueForKeyPath(kRequest, ""), "empty key");
  EXPECT_EQ(*valueForKeyPath(kRequest, "Outer."), "inner empty");
  EXPECT_EQ(valueForKeyPath({}, ""), nullptr);
  EXPECT_THAT(host.events(), IsEmpty());
}

TEST_F(ValueForKeyPath, TakesTheDelimiterOfTheMomentOfTheCall) {
  keyPathDelimiter = "/";
  EXPECT_EQ(*valueForKeyPath(kRequest, "Outer/Inner"), 7);
  EXPECT_EQ(valueForKeyPath(kRequest, "Outer.Inner"), nullptr);
  JSON json;
  setValueForKeyPath(json, "a/b", 1);
  EXPECT_EQ(json, JSON({{"a", {{"b", 1}}}}));
  keyPathDelimiter = ".";
  EXPECT_EQ(*valueForKeyPath(kRequest, "Outer.Inner"), 7);
}

TEST_F(ValueForKeyPath, PrintsTheDiagnosticLineWithoutAnyKey) {
  EXPECT_EQ(valueForKeys(kRequest, {}, "a.b"), nullptr);
  EXPECT_THAT(host.events(),
              ElementsAre("print: [Gloss] Unable to use keyPath 'a.b' as key on type: String"));
}

TEST_F(SetValueForKeyPath, StoresUnderAKeyAndAPath) {
  JSON json;
  setValueForKeyPath(json, "a", 1);
  setValueForKeyPath(json, "b.c.d", 2);
  setValueForKeyPath(json, "b.c.e", 3);
  setValueForKeyPath(json, "b->f", 4, "->");
  EXPECT_EQ(json, JSON({{"a", 1}, {"b", {{"c", {{"d", 2}, {"e", 3}}}, {"f", 4}}}}));
}

TEST_F(SetValueForKeyPath, ReplacesWhatIsNotADictionary) {
  JSON json = {{"a", 1}};
  setValueForKeyPath(json, "a.b", 2);
  EXPECT_EQ(json, JSON({{"a", {{"b", 2}}}}));
  setValueForKeyPath(json, "a", 3);
  EXPECT_EQ(json, JSON({{"a", 3}}));
}

TEST_F(SetValueForKeyPath, PrintsTheDiagnosticLineWithoutAnyKey) {
  JSON json;
  setValueForKeys(json, {}, "a", 1);
  EXPECT_EQ(json, JSON());
  EXPECT_THAT(host.events(),
              ElementsAre("print: [Gloss] Unable to use keyPath 'a' as key on type: String"));
}

}  // namespace
}  // namespace Vastel_Connect

#include "json/mapping/JoinJson.h"

#include <gtest/gtest.h>

#include "json/mapping/Encoder.h"
#include "tests/json/mapping/Records.h"
#include "tests/platform/RecordingHost.h"

namespace Vastel_Connect {
namespace {

class JoinJson : public WithRecordingHost<testing::Test> {};

std::string joined(std::vector<std::optional<JSON>> dictionaries) {
  return *writeJsonText(Encoder::joinJson(std::move(dictionaries)));
}

TEST_F(JoinJson, GivesAnEmptyDictionaryForNothing) {
  EXPECT_EQ(joined({}), "{}");
  EXPECT_EQ(joined({std::nullopt, JSON{}}), "{}");
}

TEST_F(JoinJson, SkipsAbsentDictionaries) {
  EXPECT_EQ(joined({std::nullopt, JSON{{"a", 1}}, std::nullopt, JSON{{"b", 2}}}),
            R"({"a":1,"b":2})");
}

TEST_F(JoinJson, StoresEveryEntryInOrder) {
  EXPECT_EQ(joined({parsed(R"({"b":1,"a":2})"), parsed(R"({"c":3})")}), R"({"b":1,"a":2,"c":3})");
}

TEST_F(JoinJson, ReplacesAnEarlierValue) {
  EXPECT_EQ(joined({JSON{{"a", 1}}, JSON{{"a", "x"}}}), R"({"a":"x"})");
  EXPECT_EQ(joined({JSON{{"a.b", 1}}, JSON{{"a.b", nullptr}}}), R"({"a":{"b":null}})");
  EXPECT_EQ(joined({JSON{{"a.b", 1}}, JSON{{"a", 2}}}), R"({"a":2})");
  // A dictionary is stored, not merged.
  EXPECT_EQ(joined({JSON{{"a.b", 1}}, parsed(R"({"a":{"c":2}})")}), R"({"a":{"c":2}})");
}

TEST_F(JoinJson, MakesDictionariesForEachFurtherKey) {
  EXPECT_EQ(joined({JSON{{"a.b.c", 1}}}), R"({"a":{"b":{"c":1}}})");
  EXPECT_EQ(joined({JSON{{"", 1}}}), R"({"":1})");
  EXPECT_EQ(joined({JSON{{".", 1}}}), R"({"":{"":1}})");
  EXPECT_EQ(joined({JSON{{"a..b", 1}}}), R"({"a":{"":{"b":1}}})");
}

TEST_F(JoinJson, GoesOnInADictionaryThatIsThere) {
  EXPECT_EQ(joined({JSON{{"a.b", 1}}, JSON{{"a.c", 2}}, JSON{{"a.d.e", 3}}}),
            R"({"a":{"b":1,"c":2,"d":{"e":3}}})");
  EXPECT_EQ(joined({parsed(R"({"a":{"b":1}})"), JSON{{"a.c", 2}}}), R"({"a":{"b":1,"c":2}})");
}

TEST_F(JoinJson, ReplacesWhatIsNoDictionaryOnTheWay) {
  EXPECT_EQ(joined({JSON{{"a", 1}}, JSON{{"a.b", 2}}}), R"({"a":{"b":2}})");
  EXPECT_EQ(joined({JSON{{"a", nullptr}}, JSON{{"a.b", 2}}}), R"({"a":{"b":2}})");
  EXPECT_EQ(joined({parsed(R"({"a":[{"b":1}]})"), JSON{{"a.b", 2}}}), R"({"a":{"b":2}})");
  EXPECT_EQ(joined({parsed(R"({"x":{"a":"1","c":3}})"), JSON{{"x.a.b", 2}}}),
            R"({"x":{"a":{"b":2},"c":3}})");
}

TEST_F(JoinJson, LeavesTheKeysOfStoredDictionariesWhole) {
  EXPECT_EQ(joined({parsed(R"({"a":{"b.c":1}})")}), R"({"a":{"b.c":1}})");
}

TEST_F(JoinJson, SplitsAtTheDelimiterOfTheTimeOfTheCall) {
  const JSON json = {{"a.b/c", 1}};
  EXPECT_EQ(writeJsonText(Encoder::joinJson({json}, "/")), R"({"a.b":{"c":1}})");
  EXPECT_EQ(writeJsonText(Encoder::joinJson({json}, "")), R"({"a.b/c":1})");
  keyPathDelimiter = "/";
  EXPECT_EQ(writeJsonText(Encoder::joinJson({json})), R"({"a.b":{"c":1}})");
  keyPathDelimiter = ".";
  EXPECT_EQ(writeJsonText(Encoder::joinJson({json})), R"({"a":{"b/c":1}})");
}

TEST_F(JoinJson, PrintsNothing) {
  EXPECT_EQ(joined({JSON{{"", 1}}, JSON{{"..", 2}}}), R"({"":{"":{"":2}}})");
  EXPECT_EQ(host.events(), std::vector<std::string>{});
}

TEST_F(JoinJson, JoinsWhatTheEncodersGive) {
  EXPECT_EQ(joined({Encoder::encode<std::string>("a.b")("x"), Encoder::encodeInt32("a.c")(1),
                    Encoder::encodeRecord<Small>("d")(Small{-1}),
                    Encoder::encodeEnum<Color>("d")(Color::Red)}),
            R"({"a":{"b":"x","c":1},"d":"red"})");
}

}  // namespace
}  // namespace Vastel_Connect

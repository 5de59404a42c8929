// Tests api/ScreenPopApi.h.
#include "api/ScreenPopApi.h"

#include <gtest/gtest.h>

#include <unordered_set>

#include "json/KeyPath.h"

namespace Vastel_Connect {
namespace {

using Texts = struct_PartialScreenPopApi::Texts;

struct_PartialScreenPopApi fromJsonText(std::string_view text) {
  return struct_PartialScreenPopApi::fromJsonText(text);
}

const struct_PartialScreenPopApi kEmpty;

TEST(ScreenPopScriptType, HasItsNamesForRawValues) {
  const struct {
    ScreenPopScriptType type;
    std::string_view raw;
  } rows[] = {
      {ScreenPopScriptType::CSD, "CSD"},
      {ScreenPopScriptType::OpenApplication, "OpenApplication"},
      {ScreenPopScriptType::OpenWebPage, "OpenWebPage"},
  };
  for (const auto& [type, raw] : rows) {
    EXPECT_EQ(rawValue(type), raw);
    EXPECT_EQ(initRawValue<ScreenPopScriptType>(raw), type);
  }
}

TEST(ScreenPopScriptType, TakesNoOtherSpelling) {
  for (const char* raw : {"csd", "OpenWebpage", " CSD", "CSD ", "", "OpenWebPag", "OpenWebPages"}) {
    EXPECT_FALSE(initRawValue<ScreenPopScriptType>(raw)) << raw;
  }
}

TEST(ScreenPopScriptType, IsHashable) {
  const std::unordered_set<ScreenPopScriptType> types = {ScreenPopScriptType::CSD,
                                                         ScreenPopScriptType::CSD};
  EXPECT_EQ(types.size(), 1U);
}

TEST(FromJsonText, FillsAllMembers) {
  const auto request = fromJsonText(R"({
      "ScriptType": "OpenApplication",
      "CallFields": {"Caller number": "204", "Caller name": "Jansen"},
      "RecognitionFields": {"Customer": "48213"},
      "CSDFileName": "lookup.csd",
      "CSDParams": {"Owner": "support", "ServerId": "7"},
      "WebPage": "https://crm.example/48213"})");
  const struct_PartialScreenPopApi expected = {
      .ScriptType = ScreenPopScriptType::OpenApplication,
      .CallFields = Texts{{"Caller number", "204"}, {"Caller name", "Jansen"}},
      .RecognitionFields = Texts{{"Customer", "48213"}},
      .CSDFileName = "lookup.csd",
      .CSDParams = Texts{{"Owner", "support"}, {"ServerId", "7"}},
      .WebPage = "https://crm.example/48213",
  };
  EXPECT_EQ(request, expected);
}

TEST(FromJsonText, GivesAnEmptyRecordForAnEmptyObjectAndForNoJson) {
  for (const char* text : {"{}", "", "x", "{", "{\"WebPage\":\"x\"", "{\"WebPage\":\"x\"} y"}) {
    EXPECT_EQ(fromJsonText(text), kEmpty) << text;
  }
}

TEST(FromJsonText, GivesAnEmptyRecordForABareStringOrNumber) {
  for (const char* text : {"\"x\"", "5", "true", "null"}) {
    EXPECT_EQ(fromJsonText(text), kEmpty) << text;
  }
}

TEST(FromJsonText, TakesScriptTypesByteForByte) {
  EXPECT_EQ(fromJsonText(R"({"ScriptType":"OpenWebPage"})").ScriptType,
            ScreenPopScriptType::OpenWebPage);
  for (const char* value : {"\"openwebpage\"", "\"OpenWebPage \"", "2", "null", "{}", "[]"}) {
    SCOPED_TRACE(value);
    const auto request =
        fromJsonText(std::string(R"({"WebPage":"p","ScriptType":)").append(value).append("}"));
    EXPECT_FALSE(request.ScriptType);
    EXPECT_EQ(request.WebPage, "p");
  }
}

TEST(FromJsonText, LeavesADictionaryOutWholeForOneValueThatIsNoText) {
  for (const char* value : {"123", "true", "null", "[]", "{}"}) {
    SCOPED_TRACE(value);
    const auto request = fromJsonText(std::string(R"({"CallFields":{"Caller name":"J","n":)")
                                          .append(value)
                                          .append(R"(},"RecognitionFields":{"a":"b"}})"));
    EXPECT_FALSE(request.CallFields);
    EXPECT_EQ(request.RecognitionFields, (Texts{{"a", "b"}}));
  }
}

TEST(FromJsonText, TellsAnEmptyDictionaryFromAnAbsentOne) {
  const auto request = fromJsonText(R"({"CallFields":{},"CSDParams":[]})");
  EXPECT_EQ(request.CallFields, Texts());
  EXPECT_FALSE(request.CSDParams);
  EXPECT_FALSE(request.RecognitionFields);
}

TEST(FromJsonText, TellsAnEmptyTextFromAnAbsentOne) {
  const auto request = fromJsonText(R"({"WebPage":""})");
  EXPECT_EQ(request.WebPage, "");
  EXPECT_FALSE(request.CSDFileName);
}

TEST(FromJsonText, LeavesOutTextsOfAnotherKind) {
  for (const char* value : {"null", "5", "1.5", "false", "[\"p\"]", "{\"p\":\"q\"}"}) {
    const auto text = std::string(R"({"WebPage":)")
                          .append(value)
                          .append(std::string(R"(,"CSDFileName":)").append(value).append("}"));
    EXPECT_EQ(fromJsonText(text), kEmpty) << text;
  }
}

TEST(FromJsonText, KnowsNoOtherSpellingOfAKey) {
  EXPECT_EQ(fromJsonText(R"({"webpage":"x","scripttype":"CSD","WebPage ":"y","WEBPAGE":"z"})"),
            kEmpty);
}

TEST(FromJsonText, LooksKeysUpByTheProgramWideDelimiter) {
  keyPathDelimiter = "Page";
  const auto request = fromJsonText(R"({"WebPage":"x","Web":{"":"https://h/"}})");
  keyPathDelimiter = ".";
  EXPECT_EQ(request.WebPage, "https://h/");
}

TEST(FromJsonText, DropsOtherKeys) {
  const auto request = fromJsonText(
      R"({"SubHeader":"h","XmlFile":{"a":{"b":[1,[2]]}},"Keystrokes":[{}],"AutoExecute":true,
          "WebPage":"p","":""})");
  EXPECT_EQ(request, struct_PartialScreenPopApi{.WebPage = "p"});
}

TEST(FromJsonText, KeepsTextsAsTheyAre) {
  const auto request =
      fromJsonText(R"({"WebPage":"a\u0000b\n\u00e9 ","CallFields":{"":"","\u00e9":" "}})");
  EXPECT_EQ(request.WebPage, std::string("a\0b\n\xC3\xA9 ", 7));
  EXPECT_EQ(request.CallFields, (Texts{{"", ""}, {"\xC3\xA9", " "}}));
}

TEST(FromJsonTextDeathTest, StopsOnATopLevelArray) {
  for (const char* text : {"[]", R"([{"WebPage":"x"}])", " [1] "}) {
    EXPECT_EXIT((void)fromJsonText(text), testing::ExitedWithCode(70), "^$") << text;
  }
}

TEST(FromJsonText, OnlyRefusesAnArrayThatIsNoJson) {
  for (const char* text : {"[1,2", "[1,]", "[\"\\ud800\"]"}) {
    EXPECT_EQ(fromJsonText(text), kEmpty) << text;
  }
  EXPECT_EQ(fromJsonText(std::string(513, '[') + std::string(513, ']')), kEmpty);
}

}  // namespace
}  // namespace Vastel_Connect

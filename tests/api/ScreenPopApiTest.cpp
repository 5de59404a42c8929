// Tests api/ScreenPopApi.h.
#include "api/ScreenPopApi.h"

#include <gtest/gtest.h>

#include <unordered_set>

#include "json/KeyPath.h"

namespace Vastel_Connect {
namespace {

using Fields = struct_PartialScreenPopApi::Fields;

struct_PartialScreenPopApi fromJsonText(std::string_view text) {
  return struct_PartialScreenPopApi::fromJsonText(text);
}

const struct_PartialScreenPopApi kEmpty;

TEST(ScreenPopScriptType, HasItsNamesForRawValuesByteForByte) {
  const std::pair<ScreenPopScriptType, std::string_view> rows[] = {
      {ScreenPopScriptType::CSD, "CSD"},
      {ScreenPopScriptType::OpenApplication, "OpenApplication"},
      {ScreenPopScriptType::OpenWebPage, "OpenWebPage"},
  };
  for (const auto& [type, raw] : rows) {
    EXPECT_EQ(rawValue(type), raw);
    EXPECT_EQ(initRawValue<ScreenPopScriptType>(raw), type);
  }
  for (const char* raw : {"csd", "OpenWebpage", " CSD", "CSD ", "", "OpenWebPag", "OpenWebPages"}) {
    EXPECT_FALSE(initRawValue<ScreenPopScriptType>(raw)) << raw;
  }
  EXPECT_EQ(std::unordered_set<ScreenPopScriptType>({rows[0].first, rows[0].first}).size(), 1U);
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
      .CallFields = Fields{{"Caller number", "204"}, {"Caller name", "Jansen"}},
      .RecognitionFields = Fields{{"Customer", "48213"}},
      .CSDFileName = "lookup.csd",
      .CSDParams = Fields{{"Owner", "support"}, {"ServerId", "7"}},
      .WebPage = "https://crm.example/48213",
  };
  EXPECT_EQ(request, expected);
}

TEST(FromJsonText, GivesAnEmptyRecordForWhatHoldsNoneOfItsMembers) {
  for (const std::string& text : std::initializer_list<std::string>{
           "{}", "", "x", "{", R"({"WebPage":"x")", R"({"WebPage":"x"} y)", R"("x")", "5", "null",
           R"({"webpage":"x","scripttype":"CSD","WebPage ":"y","WEBPAGE":"z"})",
           // An array that is no JSON does not end the program.
           "[1,2", "[1,]", R"(["\ud800"])", std::string(513, '[') + std::string(513, ']')}) {
    EXPECT_EQ(fromJsonText(text), kEmpty) << text;
  }
}

TEST(FromJsonText, LeavesOutAMemberOfAnotherKind) {
  for (const std::string value : {"null", "5", "1.5", "false", "[\"p\"]", "{\"p\":5}"}) {
    std::string text = R"({"SubHeader":"h","":"")";
    for (const char* key :
         {"ScriptType", "CallFields", "RecognitionFields", "CSDFileName", "CSDParams", "WebPage"}) {
      text.append(",\"").append(key).append("\":").append(value);
    }
    EXPECT_EQ(fromJsonText(text + "}"), kEmpty) << text;
  }
  for (const char* value : {"openwebpage", "OpenWebPage ", ""}) {
    const std::string text = R"({"ScriptType":")" + std::string(value) + R"(","WebPage":"p"})";
    EXPECT_EQ(fromJsonText(text), struct_PartialScreenPopApi{.WebPage = "p"});
  }
}

TEST(FromJsonText, LeavesADictionaryOutWholeForOneValueThatIsNoText) {
  const auto request =
      fromJsonText(R"({"CallFields":{"Caller name":"J","n":123},"RecognitionFields":{"a":"b"}})");
  EXPECT_EQ(request, (struct_PartialScreenPopApi{.RecognitionFields = Fields{{"a", "b"}}}));
}

TEST(FromJsonText, TellsWhatIsEmptyFromWhatIsAbsent) {
  const auto request = fromJsonText(R"({"CallFields":{},"WebPage":""})");
  EXPECT_EQ(request, (struct_PartialScreenPopApi{.CallFields = Fields(), .WebPage = ""}));
}

TEST(FromJsonText, LooksKeysUpByTheProgramWideDelimiter) {
  keyPathDelimiter = "Page";
  const auto request = fromJsonText(R"({"WebPage":"x","Web":{"":"https://h/"}})");
  keyPathDelimiter = ".";
  EXPECT_EQ(request.WebPage, "https://h/");
}

TEST(FromJsonText, KeepsTextsAsTheyAre) {
  const auto request =
      fromJsonText(R"({"WebPage":"a\u0000b\n\u00e9 ","CallFields":{"":"","\u00e9":" "}})");
  EXPECT_EQ(request.WebPage, std::string("a\0b\n\xC3\xA9 ", 7));
  EXPECT_EQ(request.CallFields, (Fields{{"", ""}, {"\xC3\xA9", " "}}));
}

TEST(FromJsonTextDeathTest, StopsOnATopLevelArray) {
  for (const char* text : {"[]", R"([{"WebPage":"x"}])", " [1] "}) {
    EXPECT_EXIT((void)fromJsonText(text), testing::ExitedWithCode(70), "^$") << text;
  }
}

}  // namespace
}  // namespace Vastel_Connect

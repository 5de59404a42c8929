// Tests api/ScreenPopApi.h.
#include "api/ScreenPopApi.h"

#include <gtest/gtest.h>

#include "json/KeyPath.h"

namespace Vastel_Connect {
namespace {

using Fields = struct_PartialScreenPopApi::Fields;

constexpr auto fromJsonText = struct_PartialScreenPopApi::fromJsonText;

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
}

TEST(FromJsonText, KeepsTextsAsTheyAreAndLeavesOutWhatHoldsAnotherKind) {
  const std::pair<const char*, struct_PartialScreenPopApi> rows[] = {
      {R"({"ScriptType":"openwebpage","WebPage":"p"})", {.WebPage = "p"}},
      {R"({"CallFields":{"Caller name":"J","n":123},"RecognitionFields":{"a":"b"}})",
       {.RecognitionFields = Fields{{"a", "b"}}}},
      {R"({"CallFields":{},"WebPage":""})", {.CallFields = Fields(), .WebPage = ""}},
      {R"({"WebPage":"a\u0000b\n\u00e9 ","CallFields":{"":"","\u00e9":" "}})",
       {.CallFields = Fields{{"", ""}, {"\xC3\xA9", " "}},
        .WebPage = std::string("a\0b\n\xC3\xA9 ", 7)}},
  };
  for (const auto& [text, expected] : rows) EXPECT_EQ(fromJsonText(text), expected) << text;
}

TEST(FromJsonText, LooksKeysUpByTheProgramWideDelimiter) {
  keyPathDelimiter = "Page";
  const auto request = fromJsonText(R"({"WebPage":"x","Web":{"":"https://h/"}})");
  keyPathDelimiter = ".";
  EXPECT_EQ(request.WebPage, "https://h/");
}

TEST(FromJsonTextDeathTest, StopsOnATopLevelArray) {
  for (const char* text : {"[]", R"([{"WebPage":"x"}])", " [1] "}) {
    EXPECT_EXIT((void)fromJsonText(text), testing::ExitedWithCode(70), "^$") << text;
  }
}

}  // namespace
}  // namespace Vastel_Connect

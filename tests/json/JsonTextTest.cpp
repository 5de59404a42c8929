// Tests json/JsonText.h.
#include "json/JsonText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

#include "tests/platform/Data.h"

namespace Vastel_Connect {
namespace {

TEST(ParseJsonText, TakesObjectsAndArraysAlone) {
  for (const char* text : {"{}", "[]", " \t\r\n{\"a\":1} \t\r\n"}) {
    EXPECT_TRUE(parseJsonText(text)) << text;
  }
  for (const char* text :
       {"\"x\"", "5", "true", "null", "", " ", "{", "{} x", "{a:1}", "{'a':1}", "{\"a\":1,}",
        "[1,]", "{} // note", "[\"\n\"]", "[\"\\ud800\"]", "[\"\xFF\"]", "\xEF\xBB\xBF{}"}) {
    EXPECT_FALSE(parseJsonText(text)) << text;
  }
}

TEST(ParseJsonText, TakesNumbersOfAnySize) {
  for (const auto& row : readTable("json_numbers.tsv")) {
    const std::string number = jsonString(row[0]);
    // A text that looks like a number stays as it is, as does a long number; zeros mean nothing.
    const auto document = parseJsonText(
        R"({"e\"1e99999999999":"1e99999999999","large":12345678901,"zeros":1e00000000002,"n":)" +
        number + "}");
    ASSERT_EQ(document.has_value(), row[1] != "reject") << number;
    EXPECT_EQ(parseJsonText("[" + number + "]").has_value(), row[1] != "reject") << number;
    if (!document) continue;
    EXPECT_EQ(document->at("e\"1e99999999999"), "1e99999999999") << number;
    EXPECT_EQ(document->at("large"), 12345678901) << number;
    EXPECT_EQ(document->at("zeros"), 100.0) << number;
    const double expected = std::strtod(row[1].c_str(), nullptr);
    const auto value = document->at("n").to_number<double>();
    EXPECT_TRUE(std::isnan(expected) ? std::isnan(value) : value == expected) << number;
  }
}

TEST(ParseJsonText, TakesAsManyLevelsAsThePlatform) {
  // Its own figures, not ours.
  EXPECT_TRUE(parseJsonText(std::string(512, '[') + std::string(512, ']')));
  EXPECT_FALSE(parseJsonText(std::string(513, '[') + std::string(513, ']')));
}

TEST(WriteJsonText, EscapesAsThePlatformDoes) {
  for (const auto& row : readTable("json_string_escape.tsv")) {
    SCOPED_TRACE(row[0]);
    std::string expected = row[1];
    // Either form of the solidus is JSON; this writer leaves it alone.
    if (const auto solidus = expected.find("\\/"); solidus != expected.npos) {
      expected.erase(solidus, 1);
    }
    EXPECT_EQ(writeJsonText({{"k", jsonString(row[0])}}), "{\"k\":\"" + expected + "\"}");
  }
}

TEST(WriteJsonText, IsAbsentForANumberThatJsonHasNoFormFor) {
  const JsonValue read = parseJsonText(R"({"v":1e999})")->at("v");
  const double kNan = std::numeric_limits<double>::quiet_NaN();
  for (const JsonValue& value : {read, JsonValue(-read.get_double()), JsonValue(kNan)}) {
    EXPECT_EQ(writeJsonText({{"v", value}}), std::nullopt);
    EXPECT_EQ(writeJsonText({{"a", 1}, {"v", {1, {{"w", value}}}}, {"z", 2}}), std::nullopt);
  }
  EXPECT_EQ(writeJsonText({{"v", 1.5}}), R"({"v":1.5E0})");
}

TEST(WriteJsonText, IsAbsentForTextThatIsNotUtf8) {
  EXPECT_EQ(writeJsonText({{"v", "\xFF"}}), std::nullopt);
  EXPECT_EQ(writeJsonText({{"\xFF", "v"}}), std::nullopt);
  EXPECT_EQ(writeJsonText({{"v", {{{"a\xC3", 1}}}}}), std::nullopt);
}

}  // namespace
}  // namespace Vastel_Connect

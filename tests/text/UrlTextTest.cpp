// Tests text/UrlText.h.
#include "text/UrlText.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "tests/platform/Data.h"

namespace Vastel_Connect {
namespace {

/// Checks a copy of exactly the text's size, so that a sanitizer sees each read beyond it.
bool forms(std::string_view text) {
  const auto copy = std::make_unique<char[]>(text.size());
  std::memcpy(copy.get(), text.data(), text.size());
  return formsUrl({copy.get(), text.size()});
}

TEST(FormsUrl, AgreesWithThePlatform) {
  int accepted = 0;
  for (const auto& row : readTable("nsurl.tsv")) {
    EXPECT_EQ(forms(jsonString(row[0])), row[1] == "accept") << row[0];
    accepted += row[1] == "accept" ? 1 : 0;
  }
  EXPECT_GT(accepted, 0);
}

TEST(FormsUrl, LooksAtNoSyntax) {
  for (const char* text : {"", "foo", "--help", "/etc/passwd", "//h", ":", "://", "http://["}) {
    EXPECT_TRUE(forms(text)) << text;
  }
}

TEST(FormsUrl, WantsTwoHexDigitsBehindAPercentSign) {
  for (const char* text : {"%00", "%FF", "%aF", "a%2525", "%41%42"})
    EXPECT_TRUE(forms(text)) << text;
  for (const char* text : {"%", "%4", "a%4", "%zz", "%4z", "%z4", "%%41", "%4%1"}) {
    EXPECT_FALSE(forms(text)) << text;
  }
}

TEST(FormsUrl, TakesOneNumberSign) {
  EXPECT_TRUE(forms("http://h/#a"));
  EXPECT_FALSE(forms("http://h/#a#b"));
}

TEST(FormsUrl, RefusesBlanksControlsAndAllButAscii) {
  for (const std::string_view text :
       {std::string_view("http://h/a b"), std::string_view("a\0", 2), std::string_view("\x7F"),
        std::string_view("http://h/\xC3\xA9"), std::string_view("a\n")}) {
    EXPECT_FALSE(forms(text)) << text;
  }
}

TEST(UrlScheme, IsThatOfRfc3986) {
  const struct {
    std::string_view text;
    std::string_view scheme;
  } rows[] = {
      {"screenpop:", "screenpop"},
      {"screenpop:x", "screenpop"},
      {"SCREENPOP:x", "SCREENPOP"},
      {"s:", "s"},
      {"a1+-.z:b:c", "a1+-.z"},
      {"http://h/", "http"},
      {"A:\\b", "A"},
      {"x:\xff", "x"},
      {"", ""},
      {":", ""},
      {":x", ""},
      {"screenpop", ""},
      {"1a:", ""},
      {"-log", ""},
      {"--a:b", ""},
      {"+a:", ""},
      {".a:", ""},
      {"a_b:", ""},
      {"a b:", ""},
      {" a:", ""},
      {"a/b:c", ""},
      {"a%20:", ""},
      {"\xc3\xbc:", ""},
      {"a\xc3\xbc:", ""},
      {"/usr/bin/a:b", ""},
      {"a\n:", ""},
      {"[a:", ""},
      {"@a:", ""},
  };
  for (const auto& [text, scheme] : rows) EXPECT_EQ(urlScheme(text), scheme) << text;
}

}  // namespace
}  // namespace Vastel_Connect

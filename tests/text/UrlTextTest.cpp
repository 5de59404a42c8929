// Tests text/UrlText.h.
#include "text/UrlText.h"

#include <gtest/gtest.h>

#include "tests/platform/Data.h"

namespace Vastel_Connect {
namespace {

TEST(FormsUrl, AgreesWithThePlatform) {
  for (const auto& row : readTable("nsurl.tsv")) {
    EXPECT_EQ(formsUrl(jsonString(row[0])), row[1] == "accept") << row[0];
  }
}

TEST(UrlText, KeepsEveryOrdinaryUrl) {
  for (const char* text :
       {"", "foo", "foo#a", "#a", "/etc/passwd", ":", "//h#a", "https://u:p@h:80/a%20b?q=1#top",
        "http://[::1]", "http://[::1]:80/", "http://a@[b@c]/", "http://u@[::1]?a", "//[::1]/",
        "file:/x#y", "file:///x#y", "a_b:c#d", "http://h#a", "mailto:a@b"}) {
    EXPECT_EQ(urlText(text), text);
  }
}

TEST(UrlText, EscapesBracketsButAtTheEndsOfTheHost) {
  const std::pair<const char*, const char*> rows[] = {
      {"http://h/?a[]=1", "http://h/?a%5B%5D=1"},
      {"https://h/a?q=[1]#[top]", "https://h/a?q=%5B1%5D#%5Btop%5D"},
      {"http://u[1]@[::1]:80/[x]", "http://u%5B1%5D@[::1]:80/%5Bx%5D"},
      {"http://[a]b]/", "http://[a%5Db]/"},
      {"http://[a[b]/", "http://[a%5Bb]/"},
      {"http://[a]b:1]/", "http://[a%5Db:1%5D/"},
      {"http://a[b]c/", "http://a%5Bb%5Dc/"},
      {"http://x[::1]/", "http://x%5B::1]/"},
      {"//[][:]", "//[%5D%5B:]"},
      {"http://a@b@[:]:[:]", "http://a@b@%5B:]:%5B:%5D"},
      {"http://a:[1]/", "http://a:%5B1%5D/"},
      {"http://[::1/]", "http://[::1/%5D"},
      {"http://h?[::1]", "http://h?%5B::1%5D"},
      {"//?]", "//?%5D"},
      {"http://:x]/", "http://:x%5D/"},
      {"http:/[::1]/", "http:/%5B::1%5D/"},
      {"[::1]", "%5B::1%5D"},
      {"[://[h]/", "%5B://%5Bh%5D/"},
      {"x:[]", "x:%5B%5D"},
  };
  for (const auto& [text, url] : rows) EXPECT_EQ(urlText(text), url);
}

TEST(UrlText, EscapesTheNumberSignWhereNoSlashFollowsTheScheme) {
  const std::pair<const char*, const char*> rows[] = {
      {"tel:#1234", "tel:%231234"}, {"a:b/c#d", "a:b/c%23d"}, {"1:x#y", "1:x%23y"}, {":#", ":%23"},
      {"+-.:#", "+-.:%23"},
  };
  for (const auto& [text, url] : rows) EXPECT_EQ(urlText(text), url);
}

TEST(FormsUrl, WantsTwoHexDigitsBehindAPercentSign) {
  for (const char* text : {"%00", "%9A", "%FF", "%a9", "%fa", "a%2525", "%41%42"}) {
    EXPECT_TRUE(formsUrl(text)) << text;
  }
  for (const char* text : {"%", "a%4", "%4%1", "%4G", "%G4", "%4@", "%@4", "%4g", "%g4", "%4`",
                           "%`4", "%4/", "%/4", "%4:", "%:4", "%41 "}) {
    EXPECT_FALSE(formsUrl(text)) << text;
  }
}

TEST(UrlScheme, IsThatOfRfc3986) {
  const std::pair<std::string_view, std::string_view> rows[] = {
      {"screenpop:", "screenpop"},
      {"screenpop:x", "screenpop"},
      {"SCREENPOP:x", "SCREENPOP"},
      {"s:", "s"},
      {"a1+-.z:b:c", "a1+-.z"},
      {"http://h/", "http"},
      {"A:\\b", "A"},
      {"x:\xff", "x"},
      {"ZAza:", "ZAza"},
  };
  for (const auto& [text, scheme] : rows) EXPECT_EQ(urlScheme(text), scheme) << text;
  for (const char* text :
       {"",    ":",    ":x",   "screenpop", "1a:",        "-log",        "--a:b", "+a:",
        ".a:", "a_b:", "a b:", " a:",       "a/b:c",      "a%20:",       "a\n:",  "[a:",
        "@a:", "{a:",  "`a:",  "\xc3\xbc:", "a\xc3\xbc:", "/usr/bin/a:b"}) {
    EXPECT_EQ(urlScheme(text), "") << text;
  }
}

}  // namespace
}  // namespace Vastel_Connect

#include "json/mapping/Url.h"

#include <gtest/gtest.h>

#include "text/UrlText.h"

namespace Vastel_Connect {
namespace {

TEST(Url, IsMadeOfATextThatFormsAUrl) {
  for (const std::string text : {"", "foo", "/etc/passwd", "https://example.org/a%20b?q=1#top"}) {
    const auto url = Url::fromText(text);
    ASSERT_TRUE(url) << text;
    EXPECT_EQ(url->absoluteString(), text);
  }
}

TEST(Url, HasTheTextOfTheUrlThatIsFormed) {
  EXPECT_EQ(Url::fromText("http://h/?a[]=1")->absoluteString(), "http://h/?a%5B%5D=1");
  EXPECT_EQ(Url::fromText("tel:#1"), Url::fromText("tel:%231"));
}

TEST(Url, IsAbsentForATextThatFormsNone) {
  for (const std::string text : {"a b", "100%", "a#b#c", "\xC3\xA9", "<x>"}) {
    EXPECT_EQ(Url::fromText(text), std::nullopt) << text;
  }
}

TEST(PercentEncodedForQuery, KeepsEveryCharacterOfAQuery) {
  const std::string kept =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~!$&'()*+,;=:@/?";
  EXPECT_EQ(percentEncodedForQuery(kept), kept);
  EXPECT_EQ(percentEncodedForQuery(""), "");
}

TEST(PercentEncodedForQuery, EncodesEveryOtherByte) {
  using namespace std::string_view_literals;
  EXPECT_EQ(percentEncodedForQuery(" \"#%<>[\\]^`{|}"),
            "%20%22%23%25%3C%3E%5B%5C%5D%5E%60%7B%7C%7D");
  EXPECT_EQ(percentEncodedForQuery("\0\n\x7F"sv), "%00%0A%7F");
  EXPECT_EQ(percentEncodedForQuery("\xC3\xA9 \xF0\x9F\x93\x9E"), "%C3%A9%20%F0%9F%93%9E");
}

TEST(PercentEncodedForQuery, EncodesAnEncodedTextOnceMore) {
  EXPECT_EQ(percentEncodedForQuery("a%20b"), "a%2520b");
}

TEST(PercentEncodedForQuery, IsAbsentForBytesThatAreNoText) {
  for (const std::string text : {"\xC3", "\xFF", "\xED\xA0\x80", "a\x80"}) {
    EXPECT_EQ(percentEncodedForQuery(text), std::nullopt);
  }
}

TEST(PercentEncodedForQuery, FormsAUrlOfAnyText) {
  for (int c = 0; c < 128; ++c) {
    const auto encoded = percentEncodedForQuery(std::string(2, static_cast<char>(c)));
    ASSERT_TRUE(encoded) << c;
    EXPECT_TRUE(formsUrl(*encoded)) << *encoded;
  }
}

}  // namespace
}  // namespace Vastel_Connect

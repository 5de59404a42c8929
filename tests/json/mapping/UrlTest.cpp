#include "json/mapping/Url.h"

#include <gtest/gtest.h>

namespace Vastel_Connect {
namespace {

TEST(Url, HasTheTextOfTheUrlThatATextForms) {
  for (const char* text : {"", "foo", "https://example.org/a%20b?q=1#top"}) {
    EXPECT_EQ(Url::fromText(text)->absoluteString(), text);
  }
  EXPECT_EQ(Url::fromText("http://h/?a[]=1")->absoluteString(), "http://h/?a%5B%5D=1");
  EXPECT_EQ(Url::fromText("tel:#1"), Url::fromText("tel:%231"));
  EXPECT_EQ(Url::fromText("a b"), std::nullopt);
}

TEST(PercentEncodedForQuery, EncodesEveryByteThatMayNotStandInAQuery) {
  const std::string kept =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~!$&'()*+,;=:@/?";
  EXPECT_EQ(percentEncodedForQuery(kept), kept);
  EXPECT_EQ(percentEncodedForQuery(" \"#%<>[\\]^`{|}"),
            "%20%22%23%25%3C%3E%5B%5C%5D%5E%60%7B%7C%7D");
  EXPECT_EQ(percentEncodedForQuery(std::string("\0\t\n\x7F", 4)), "%00%09%0A%7F");
  EXPECT_EQ(percentEncodedForQuery("\xC3\xA9 \xF0\x9F\x93\x9E"), "%C3%A9%20%F0%9F%93%9E");
  EXPECT_EQ(percentEncodedForQuery("a\x80"), std::nullopt);
}

}  // namespace
}  // namespace Vastel_Connect

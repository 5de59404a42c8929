#include "text/SchemeList.h"

#include <gtest/gtest.h>

namespace Vastel_Connect {
namespace {

TEST(ListHasScheme, ByWholeWordsInAnyCase) {
  for (const std::string_view list : {"https", "tel;https", "https;tel;", "HttpS", "https;https",
                                      " https\t;\ttel ", ";; https"}) {
    EXPECT_TRUE(listHasScheme(list, "https")) << list;
    EXPECT_TRUE(listHasScheme(list, "HTTPS")) << list;
  }
  for (const std::string_view list :
       {"", ";", " ", "http", "httpss", "shttps", "*", "http*", ".*", "https:", "https://",
        "https,tel", "https tel", "ht tps", "https\\s", "\\shttps", "\"https\"", "https\xc2\xa0",
        "http\xc5\xbf"}) {
    EXPECT_FALSE(listHasScheme(list, "https")) << list;
    EXPECT_FALSE(listHasScheme(list, "")) << list;
  }
}

}  // namespace
}  // namespace Vastel_Connect

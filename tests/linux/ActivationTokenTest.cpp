// Tests tokenText of platform/linux/ActivationToken.h.
#include "platform/linux/ActivationToken.h"

#include <gtest/gtest.h>

namespace Vastel_Connect {
namespace {

TEST(TokenText, IsPrintableAsciiOfALimitedLength) {
  const std::string longest(kTokenLengthLimit, 'x');
  for (const std::string& text : {std::string("!"), std::string("~"), longest}) {
    EXPECT_EQ(tokenText(text), text);
  }
  for (const std::string& text :
       {std::string(), std::string("a b"), std::string("\ta"), std::string("a\x7f"),
        std::string("\xc3\xbc"), std::string("a\0b", 3), longest + "x"}) {
    EXPECT_EQ(tokenText(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace Vastel_Connect

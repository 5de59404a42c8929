#include "text/Ascii.h"

#include <gtest/gtest.h>

namespace Vastel_Connect {
namespace {

TEST(Ascii, LowersItsLettersAlone) {
  EXPECT_EQ(asciiLowerCase("@AZ[`az{\xC1"), "@az[`az{\xC1");
}

TEST(Ascii, HasSixteenHexadecimalDigits) {
  std::string digits;
  for (int number = 0; number < 16; ++number) digits += asciiHexDigit(number);
  EXPECT_EQ(digits, "0123456789ABCDEF");
}

}  // namespace
}  // namespace Vastel_Connect

// Tests text/Base64.h.
#include "text/Base64.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/platform/Base64Text.h"
#include "tests/platform/Data.h"

namespace Vastel_Connect {
namespace {

TEST(DecodeBase64, AgreesWithThePlatformAndRefusesEveryDisputedFormOfPadding) {
  for (const char* table : {"base64.tsv", "base64_ambiguous.tsv"}) {
    for (const auto& row : readTable(table)) {
      const auto expected = row[1] == "reject" ? std::nullopt : std::optional(hexBytes(row[1]));
      EXPECT_EQ(decodeBase64(jsonString(row[0])), expected) << row[0];
    }
  }
}

TEST(DecodeBase64, RefusesEachCharacterThatIsNotOfItsAlphabet) {
  for (int c = 0; c < 256; ++c) {
    const std::string text = std::string("AA") + static_cast<char>(c) + "A";
    EXPECT_EQ(decodeBase64(text).has_value(), std::isalnum(c) != 0 || c == '+' || c == '/') << c;
  }
}

TEST(DecodeBase64, GivesBackWhatWasEncoded) {
  std::mt19937 random(20181101);
  for (std::size_t size = 0; size < 300; ++size) {
    std::string bytes(size, '\0');
    for (char& c : bytes) c = static_cast<char>(random());
    EXPECT_EQ(decodeBase64(base64Text(bytes)), bytes);
  }
}

}  // namespace
}  // namespace Vastel_Connect

// Tests text/Base64.h.
#include "text/Base64.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>

#include "tests/platform/Base64Text.h"
#include "tests/platform/Data.h"

namespace Vastel_Connect {
namespace {

/// Decodes a copy of exactly the text's size, so that a sanitizer sees each read beyond it.
std::optional<std::string> decode(std::string_view text) {
  const auto copy = std::make_unique<char[]>(text.size());
  std::memcpy(copy.get(), text.data(), text.size());
  return decodeBase64({copy.get(), text.size()});
}

TEST(DecodeBase64, AgreesWithThePlatform) {
  for (const auto& row : readTable("base64.tsv")) {
    const auto expected = row[1] == "reject" ? std::nullopt : std::optional(hexBytes(row[1]));
    EXPECT_EQ(decode(jsonString(row[0])), expected) << row[0];
  }
}

TEST(DecodeBase64, RefusesEveryDisputedFormOfPadding) {
  for (const auto& row : readTable("base64_ambiguous.tsv")) {
    ASSERT_EQ(row[1], "reject");
    EXPECT_FALSE(decode(jsonString(row[0]))) << row[0];
  }
}

TEST(DecodeBase64, DecodesTheEmptyTextAndIgnoresTheUnusedBitsBeforePadding) {
  EXPECT_EQ(decode(""), "");
  EXPECT_EQ(decode("QR=="), "A");
  EXPECT_EQ(decode("QUJ="), "AB");
}

TEST(DecodeBase64, RefusesEachOtherCharacterInEachPlace) {
  int refused = 0;
  for (int c = 0; c < 256; ++c) {
    for (std::size_t place = 0; place < 8; ++place) {
      std::string text = "QUJDREVG";
      text[place] = static_cast<char>(c);
      const bool inAlphabet = std::isalnum(c) != 0 || c == '+' || c == '/';
      const bool padding = c == '=' && place == 7;
      EXPECT_EQ(decode(text).has_value(), inAlphabet || padding) << text;
      refused += inAlphabet || padding ? 0 : 1;
    }
  }
  EXPECT_EQ(refused, (256 - 64) * 8 - 1);
}

TEST(DecodeBase64, GivesBackWhatWasEncoded) {
  std::mt19937 random(20181101);
  for (std::size_t size = 0; size < 300; ++size) {
    std::string bytes(size, '\0');
    for (char& c : bytes) c = static_cast<char>(random());
    EXPECT_EQ(decode(base64Text(bytes)), bytes);
  }
}

}  // namespace
}  // namespace Vastel_Connect

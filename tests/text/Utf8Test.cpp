#include "text/Utf8.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/platform/Data.h"

namespace Vastel_Connect {
namespace {

// ASCII is read in words of eight bytes: what surrounds a row must not matter, wherever it begins.
TEST(IsUtf8, JudgesARowTheSameWhereverItStands) {
  for (const auto& row : readTable("utf8.tsv")) {
    const std::string bytes = row[0] == "\"\"" ? "" : hexBytes(row[0]);
    for (std::size_t before = 0; before <= 17; ++before) {
      for (std::size_t behind = 0; behind <= 9; ++behind) {
        const std::string text = std::string(before, 'a') + bytes + std::string(behind, '\x7F');
        EXPECT_EQ(isUtf8(text), row[1] == "valid") << row[0] << " " << before << " " << behind;
      }
    }
  }
}

TEST(IsUtf8, LooksAtEveryRun) {
  const std::string valid = "aaaaaaaaaaaa\u00E9aaaaaaaaaaaa\U0001F4DE";
  EXPECT_TRUE(isUtf8(valid + valid));
  EXPECT_FALSE(isUtf8(valid + "\xC3" + valid));
  EXPECT_FALSE(isUtf8(valid + valid + "\xFF"));
  EXPECT_FALSE(isUtf8("\x80" + valid));
}

TEST(IsUtf8, TheEmptyTextIs) {
  EXPECT_TRUE(isUtf8(""));
  EXPECT_TRUE(isUtf8(std::string_view()));
}

}  // namespace
}  // namespace Vastel_Connect

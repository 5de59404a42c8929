#include "text/Utf8.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/platform/Data.h"

namespace Vastel_Connect {
namespace {

TEST(IsUtf8, JudgesEachRowOfTheVectorsAloneAndInsideAText) {
  for (const auto& row : readTable("utf8.tsv")) {
    const std::string bytes = row[0] == "\"\"" ? "" : hexBytes(row[0]);
    EXPECT_EQ(isUtf8(bytes), row[1] == "valid") << row[0];
    EXPECT_EQ(isUtf8("a" + bytes + "\x7F"), row[1] == "valid") << row[0];
  }
}

TEST(IsUtf8, LooksAtEveryRun) {
  EXPECT_TRUE(isUtf8(std::string_view()));
  const std::string valid = "aaaaaaaaaaaa\u00E9aaaaaaaaaaaa\U0001F4DE";
  EXPECT_TRUE(isUtf8(valid + valid));
  EXPECT_FALSE(isUtf8(valid + "\xC3" + valid));
  EXPECT_FALSE(isUtf8(valid + valid + "\xFF"));
  EXPECT_FALSE(isUtf8("\x80" + valid));
}

}  // namespace
}  // namespace Vastel_Connect

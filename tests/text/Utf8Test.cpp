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

}  // namespace
}  // namespace Vastel_Connect

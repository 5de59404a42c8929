// The examples of docs/json.md, of which CMake makes the files that are included here.
#include "json_doc/1.inc"
#include "json_doc/2.inc"

}  // namespace Vastel_Connect

#include "json_doc/3.inc"

}  // namespace Vastel_Connect

#include <gtest/gtest.h>

#include "json/JsonText.h"

namespace Vastel_Connect {
namespace {

const std::string kText =
#include "json_doc/text.inc"
    ;

std::optional<CallReport> read(std::string_view text) {
#include "json_doc/4.inc"
  return report;
}

std::optional<std::vector<CallReport>> readAll(const JSON& json) {
#include "json_doc/5.inc"
  return reports;
}

TEST(JsonDoc, ReadsAndWritesItsText) {
  const auto report = read(kText);
  ASSERT_TRUE(report);
  EXPECT_EQ(report->state, CallState::Connected);
  EXPECT_EQ(report->startedAt.time_since_epoch().count(), 1520255229);
  EXPECT_EQ(report->caller, (Caller{"A. Caller", std::nullopt}));
  EXPECT_EQ(report->tags, (std::vector<std::string>{"sales", "new"}));
  EXPECT_TRUE(CallReport::fromJson(*report->toJson()) == report);
}

TEST(JsonDoc, ReadsAnArrayOfRecordsAsAWhole) {
  const auto reports = [](const std::string& second) {
    return readAll(parseJsonText(R"({"reports":[)" + kText + "," + second + "]}")->get_object());
  };
  EXPECT_EQ(reports(kText)->size(), 2U);
  EXPECT_FALSE(reports("{}"));
  EXPECT_FALSE(read("not JSON"));
}

}  // namespace
}  // namespace Vastel_Connect

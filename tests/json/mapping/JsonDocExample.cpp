// The examples of docs/json.md. What stands between "begin" and "end" stands in the page too, in
// the same order.
#include <gtest/gtest.h>

#include <sstream>

// begin
#include <optional>
#include <string>
#include <vector>

#include "json/Json.h"
#include "json/RawValue.h"
#include "json/mapping/Date.h"

namespace Vastel_Connect {

enum class CallState { Ringing, Connected, Ended };

template <>
struct RawValues<CallState> {
  static constexpr std::pair<CallState, std::string_view> rows[] = {
      {CallState::Ringing, "ringing"},
      {CallState::Connected, "connected"},
      {CallState::Ended, "ended"},
  };
};
// end

// begin
struct Caller {
  std::string name;
  std::optional<std::string> number;

  [[nodiscard]] static std::optional<Caller> fromJson(const JSON& json);
  [[nodiscard]] std::optional<JSON> toJson() const;

  bool operator==(const Caller&) const = default;
};

struct CallReport {
  CallState state;
  Date startedAt;
  Caller caller;
  std::vector<std::string> tags;

  [[nodiscard]] static std::optional<CallReport> fromJson(const JSON& json);
  [[nodiscard]] std::optional<JSON> toJson() const;

  bool operator==(const CallReport&) const = default;
};
// end

}  // namespace Vastel_Connect

// begin
#include "json/mapping/Decoder.h"
#include "json/mapping/Encoder.h"
#include "json/mapping/JoinJson.h"

namespace Vastel_Connect {

std::optional<Caller> Caller::fromJson(const JSON& json) {
  const auto name = Decoder::decode<std::string>("name")(json);
  if (!name) return std::nullopt;
  return Caller{*name, Decoder::decode<std::string>("number")(json)};
}

std::optional<JSON> Caller::toJson() const {
  return Encoder::joinJson({
      Encoder::encode<std::string>("name")(name),
      Encoder::encode<std::string>("number")(number),
  });
}

std::optional<CallReport> CallReport::fromJson(const JSON& json) {
  const auto state = Decoder::decodeEnum<CallState>("call.state")(json);
  const auto startedAt = Decoder::decodeDate("call.startedAt")(json);
  const auto caller = Decoder::decodeRecord<Caller>("caller")(json);
  const auto tags = Decoder::decode<std::vector<std::string>>("tags")(json);
  if (!state || !startedAt || !caller || !tags) return std::nullopt;
  return CallReport{*state, *startedAt, *caller, *tags};
}

std::optional<JSON> CallReport::toJson() const {
  return Encoder::joinJson({
      Encoder::encodeEnum<CallState>("call.state")(state),
      Encoder::encodeDate("call.startedAt")(startedAt),
      Encoder::encodeRecord<Caller>("caller")(caller),
      Encoder::encode<std::vector<std::string>>("tags")(tags),
  });
}

static_assert(Glossy<Caller> && Glossy<CallReport>);
// end

}  // namespace Vastel_Connect

#include "json/JsonText.h"
#include "tests/json/mapping/InZone.h"
#include "tests/json/mapping/UnixTime.h"
#include "tests/platform/Data.h"

namespace Vastel_Connect {
namespace {

std::optional<CallReport> read(std::string_view text) {
  // begin
  const auto document = parseJsonText(text);
  const JSON* json = document ? document->if_object() : nullptr;
  const auto report = json != nullptr ? CallReport::fromJson(*json) : std::nullopt;
  // end
  return report;
}

std::optional<std::vector<CallReport>> readAll(const JSON& json) {
  // begin
  const auto reports = Decoder::decodeRecordArray<CallReport>("reports")(json);
  // end
  return reports;
}

/// The lines of `text` from one that holds `begin` to one that holds `end`, without the two, for
/// each such pair. Blanks at the beginning that all lines share are dropped.
std::vector<std::string> blocks(const std::string& text, std::string_view begin,
                                std::string_view end) {
  std::vector<std::string> found;
  std::istringstream lines(text);
  bool inside = false;
  std::size_t indent = 0;
  for (std::string line; std::getline(lines, line);) {
    const auto marker = line.substr(std::min(line.find_first_not_of(' '), line.size()));
    if (!inside && marker.starts_with(begin)) {
      inside = true;
      indent = line.size() - marker.size();
      found.emplace_back();
    } else if (inside && marker == end) {
      inside = false;
    } else if (inside) {
      found.back() += line.substr(std::min(indent, line.size())) + "\n";
    }
  }
  EXPECT_FALSE(inside);
  return found;
}

TEST(JsonDoc, HoldsTheseExamples) {
  const auto examples =
      blocks(readData("../json/mapping/JsonDocExample.cpp"), "// begin", "// end");
  EXPECT_EQ(examples.size(), 5);
  EXPECT_EQ(blocks(readData("../../docs/json.md"), "```cpp", "```"), examples);
}

TEST(JsonDoc, ReadsAndWritesItsText) {
  const InZone zone("Europe/Berlin");
  const auto texts = blocks(readData("../../docs/json.md"), "```json", "```");
  ASSERT_EQ(texts.size(), 1);
  const auto report = read(texts[0]);
  ASSERT_TRUE(report);
  EXPECT_EQ(report->state, CallState::Connected);
  EXPECT_EQ(unixTime(report->startedAt), 1520255229);
  EXPECT_EQ(report->caller, (Caller{"A. Caller", std::nullopt}));
  EXPECT_EQ(report->tags, (std::vector<std::string>{"sales", "new"}));
  EXPECT_EQ(*report->toJson(), parseJsonText(texts[0])->get_object());
}

TEST(JsonDoc, ReadsAnArrayOfRecordsAsAWhole) {
  const auto text = blocks(readData("../../docs/json.md"), "```json", "```").at(0);
  const auto reports = [&](const std::string& second) {
    return readAll(parseJsonText(R"({"reports":[)" + text + "," + second + "]}")->get_object());
  };
  EXPECT_EQ(reports(text)->size(), 2);
  EXPECT_FALSE(reports("{}"));
  EXPECT_FALSE(read("{}"));
  EXPECT_FALSE(read("not JSON"));
}

}  // namespace
}  // namespace Vastel_Connect

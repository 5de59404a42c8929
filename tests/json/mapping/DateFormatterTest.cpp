// Tests json/mapping/DateFormatter.h with its patterns. Dates are told by their Unix time.
#include "json/mapping/DateFormatter.h"

#include <gtest/gtest.h>

#include <chrono>

#include "tests/platform/Data.h"
#include "tests/platform/ScopedEnvironment.h"

namespace Vastel_Connect {
namespace {

constexpr std::string_view kIso = "yyyy-MM-dd'T'HH:mm:ssZZZZZ";
constexpr std::string_view kLocal = "yyyy-MM-dd HH:mm:ss";
constexpr std::int64_t kVectors = 1520255229;

std::string written(const std::string& zone, std::string_view pattern, std::int64_t time) {
  const ScopedEnvironment inZone("TZ", zone);
  return DateFormatter::forPattern(pattern)->stringFromDate(Date(std::chrono::seconds(time)));
}

std::optional<std::int64_t> read(const std::string& zone, std::string_view pattern,
                                 std::string_view text) {
  const ScopedEnvironment inZone("TZ", zone);
  const auto date = DateFormatter::forPattern(pattern)->dateFromString(text);
  return date ? std::optional<std::int64_t>(date->time_since_epoch().count()) : std::nullopt;
}

TEST(DateFormatter, WritesAndReadsTheRowsOfTheVectors) {
  for (const auto& row : readTable("date_format.tsv")) {
    SCOPED_TRACE(row.at(0) + " " + row.at(1));
    EXPECT_EQ(written(row.at(0), row.at(1), kVectors), row.at(2));
    if (row.at(1).starts_with("yyyy")) {
      EXPECT_EQ(read(row.at(0), row.at(1), row.at(2)), kVectors);
    }
  }
}

TEST(DateFormatter, ReadsTheRowsOfTheVectorsAsAWhole) {
  for (const auto& row : readTable("iso8601_parse.tsv")) {
    const auto text = jsonString(row.at(0));
    const auto length = std::to_string(text.size());
    const bool readWhole = row.size() > 2 && row[2] == length + "/" + length;
    EXPECT_EQ(read("GMT", kIso, text).value_or(-1), readWhole ? std::stoll(row[1]) : -1) << text;
  }
}

TEST(DateFormatter, KnowsItsFieldsAndKeepsOtherTexts) {
  const std::pair<const char*, const char*> rows[] = {
      {"yyyyMMddHHmmssZ", "20180305130709+0000"},
      {"", ""},
      {"HH, mm.", "13, 07."},
      {"HH' o''clock 'mm'min'", "13 o'clock 07min"},
      {"HH''mm", "13'07"},
      {"''''", "''"},
      {"'HH'", "HH"},
      {"\xC3\xA9", "\xC3\xA9"},
  };
  for (const auto& [pattern, text] : rows) EXPECT_EQ(written("GMT", pattern, kVectors), text);
}

TEST(DateFormatter, IsAbsentForOtherLettersAndOpenQuotations) {
  for (const char* pattern : {"yy", "yyyyy", "MMM", "d", "hh", "H", "m", "s", "SSS", "ZZ", "ZZZZ",
                              "ZZZZZZ", "T", "EEE", "'T", "'", "HH'", "'''"}) {
    EXPECT_FALSE(DateFormatter::forPattern(pattern)) << pattern;
  }
}

TEST(DateFormatter, RejectsWhatDoesNotFollowThePattern) {
  for (const char* text :
       {// The offset is missing, not whole, out of range or another word.
        "2018-03-05T14:07:09", "2018-03-05T14:07:09+01", "2018-03-05T14:07:09+1:00",
        "2018-03-05T14:07:09+24:00", "2018-03-05T14:07:09+01:60", "2018-03-05T14:07:09gmt",
        // Literals are compared byte for byte, and nothing may follow the text.
        "2018-03-05t14:07:09Z", "2018-03-05T14:07:09Z ",
        // Fields of other widths; signs, blanks and another script's digits for digits.
        "18-03-05T14:07:09Z", "12018-03-05T14:07:09Z", "+018-03-05T14:07:09Z",
        "2018- 3-05T14:07:09Z", "\xD9\xA2\xD9\xA0-03-05T14:07:09Z",
        // Out of range, or a day that is not there.
        "0000-03-05T14:07:09Z", "2018-00-05T14:07:09Z", "2018-13-05T14:07:09Z",
        "2018-03-00T14:07:09Z", "2018-04-31T14:07:09Z", "2018-02-29T14:07:09Z",
        "2018-03-05T24:07:09Z", "2018-03-05T14:60:09Z", "2018-03-05T14:07:60Z"}) {
    EXPECT_EQ(read("GMT", kIso, text), std::nullopt) << text;
  }
}

TEST(DateFormatter, ReadsWhatFollowsThePattern) {
  const struct {
    std::string_view pattern, text;
    std::optional<std::int64_t> time;
  } rows[] = {
      // The edges of the fields.
      {kIso, "2020-02-29T00:00:00Z", 1582934400},
      {kIso, "0001-01-01T00:00:00Z", -62135596800},
      {kIso, "2018-03-05T23:59:59+23:59", 1520294399 - 86340},
      {kIso, "2018-03-05T23:59:59-23:59", 1520294399 + 86340},
      // Unnamed fields are those of the first day of 2000.
      {"HH:mm", "01:30", 946684800 + 90 * 60},
      {"yyyy", "2001", 978307200},
      {"", "", 946684800},
      // Blanks may stand before a first field, and no literal for a missing field.
      {"HH", "  00", 946684800},
      {"' 'HH", " 00", 946684800},
      {"' 'HH", "  00", std::nullopt},
      {"HH", "  ", std::nullopt},
      {"MM'ab'", "ab", std::nullopt},
      {"Z'ab'", "+ab", std::nullopt},
  };
  for (const auto& [pattern, text, time] : rows) {
    EXPECT_EQ(read("GMT", pattern, text), time) << pattern << ": " << text;
  }
}

TEST(DateFormatter, ReadsTheDefaultZonesTimeWithoutAnOffset) {
  const std::string berlin = "Europe/Berlin";
  EXPECT_EQ(read(berlin, kLocal, "2018-03-05 14:07:09"), kVectors);
  EXPECT_EQ(read(berlin, kLocal, "2018-07-05 14:07:09"), 1530792429);
  // The clocks skip an hour, whose times are absent.
  EXPECT_EQ(read(berlin, kLocal, "2018-03-25 01:59:59"), 1521939599);
  EXPECT_EQ(read(berlin, kLocal, "2018-03-25 02:00:00"), std::nullopt);
  EXPECT_EQ(read(berlin, kLocal, "2018-03-25 02:59:59"), std::nullopt);
  EXPECT_EQ(read(berlin, kLocal, "2018-03-25 03:00:00"), 1521939600);
  // An hour comes twice, and its times mean the second.
  EXPECT_EQ(read(berlin, kLocal, "2018-10-28 01:59:59"), 1540684799);
  EXPECT_EQ(read(berlin, kLocal, "2018-10-28 02:00:00"), 1540688400);
  EXPECT_EQ(read(berlin, kLocal, "2018-10-28 02:59:59"), 1540691999);
  EXPECT_EQ(read(berlin, kLocal, "2018-10-28 03:00:00"), 1540692000);
}

TEST(DateFormatter, ReadsTimesNearTwoChangesOfTheClocksWithinTwoDays) {
  // An hour ahead from the 100th day of the year at 0:00 until noon of the day after.
  EXPECT_EQ(read("AAA0BBB,J100/0,J101/12", kLocal, "2018-04-10 03:00:00"), 1523325600);
  EXPECT_EQ(read("AAA0BBB,J100/0,J101/12", kLocal, "2018-04-11 10:00:00"), 1523437200);
}

TEST(DateFormatter, WritesEveryDateInTheTimeAndTheYearOfTheZone) {
  const struct {
    const char* zone;
    std::int64_t time;
    const char* text;
  } rows[] = {
      {"GMT", -62135596800, "0001-01-01T00:00:00Z"},
      {"GMT", 253402300799, "9999-12-31T23:59:59Z"},
      {"GMT", 253402300800, "10000-01-01T00:00:00Z"},
      {"Asia/Kathmandu", 253402300799, "10000-01-01T05:44:59+05:45"},
      // Before the year 1, those of the other era are counted.
      {"GMT", -62135596801, "0001-12-31T23:59:59Z"},
      {"GMT", -62167219201, "0002-12-31T23:59:59Z"},
      {"GMT", Date::min().time_since_epoch().count(), "292277022658-01-27T08:29:52Z"},
      {"GMT", Date::max().time_since_epoch().count(), "292277026596-12-04T15:30:07Z"},
      // POSIX counts westwards. Half a minute of an offset is rounded away from zero.
      {"OFF-1:02:30", 0, "1970-01-01T01:03:00+01:03"},
      {"OFF1:02:30", 0, "1969-12-31T22:57:00-01:03"},
      {"OFF-0:53:28", -2500000000, "1890-10-11T20:26:20+00:53"},
  };
  for (const auto& [zone, time, text] : rows) EXPECT_EQ(written(zone, kIso, time), text);
}

}  // namespace
}  // namespace Vastel_Connect

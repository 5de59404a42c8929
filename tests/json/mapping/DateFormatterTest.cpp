// Tests json/mapping/DateFormatter.h. Dates are told by their Unix time.
#include "json/mapping/DateFormatter.h"

#include <gtest/gtest.h>

#include <charconv>
#include <chrono>
#include <random>
#include <set>

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

std::int64_t number(std::string_view text) {
  std::int64_t value = 0;
  EXPECT_EQ(std::from_chars(text.data(), text.data() + text.size(), value).ec, std::errc());
  return value;
}

/// The zone of a row of date_format.tsv. Absent for a locale with a calendar or digits of its own.
std::optional<std::string> zoneOfRow(const std::string& cell) {
  static const std::set<std::string> kLocales = {
      "en_US", "en_US@hours=h12", "en_US_POSIX", "en_GB", "de_DE",
      "fr_FR", "ja_JP",           "hi_IN",       "am_ET", "ar_AE"};
  if (cell.starts_with("tz ")) return cell.substr(3);
  if (cell.starts_with("off ")) {
    const auto offset = number(cell.substr(4));
    const auto size = std::abs(offset);
    // POSIX counts westwards.
    return (offset < 0 ? "OFF" : "OFF-") + std::to_string(size / 3600) + ":" +
           std::to_string(size / 60 % 60) + ":" + std::to_string(size % 60);
  }
  return kLocales.contains(cell) ? std::optional("Europe/Berlin") : std::nullopt;
}

TEST(DateFormatter, WritesAndReadsEveryUsedRowOfTheVectors) {
  int used = 0;
  int skipped = 0;
  for (const auto& row : readTable("date_format.tsv")) {
    const auto zone = zoneOfRow(row.at(0));
    ++(zone ? used : skipped);
    if (!zone) continue;
    SCOPED_TRACE(row.at(0) + " " + row.at(1));
    EXPECT_EQ(written(*zone, row.at(1), kVectors), row.at(2));
    if (row.at(1).starts_with("yyyy")) {
      EXPECT_EQ(read(*zone, row.at(1), row.at(2)), kVectors);
    }
  }
  EXPECT_EQ(used, 63);
  EXPECT_EQ(skipped, 57);
}

TEST(DateFormatter, ReadsTheRowsOfTheVectorsAsAWhole) {
  for (const auto& row : readTable("iso8601_parse.tsv")) {
    const auto text = jsonString(row.at(0));
    const auto length = std::to_string(text.size());
    const bool readWhole = row.size() > 2 && row[2] == length + "/" + length;
    EXPECT_EQ(read("GMT", kIso, text), readWhole ? std::optional(number(row[1])) : std::nullopt)
        << text;
  }
}

TEST(DateFormatter, IsAbsentForAPatternThatIsNone) {
  EXPECT_FALSE(DateFormatter::forPattern("yy-MM-dd"));
  EXPECT_FALSE(DateFormatter::forPattern("'open"));
}

TEST(DateFormatter, RejectsWhatDoesNotFollowThePattern) {
  for (const char* text : {
           "2018-03-05T14:07:09",               // no offset
           "2018-03-05T14:07:09+01",            // offset without minutes
           "2018-03-05T14:07:09+1:00",          // and with one digit
           "2018-03-05T14:07:09+24:00",         // and out of range
           "2018-03-05T14:07:09+01:60",         //
           "2018-03-05T14:07:09gmt",            //
           "2018-03-05T14:07:09UTC",            //
           "2018-03-05t14:07:09Z",              // literals are compared byte for byte
           "18-03-05T14:07:09Z",                // fields of other widths
           "12018-03-05T14:07:09Z",             //
           "+018-03-05T14:07:09Z",              // signs and blanks for digits
           "2018- 3-05T14:07:09Z",              //
           "2018-03-05T14:07:09Z ",             // something after the text
           "0000-03-05T14:07:09Z",              // out of range
           "2018-00-05T14:07:09Z",              //
           "2018-13-05T14:07:09Z",              //
           "2018-03-00T14:07:09Z",              //
           "2018-04-31T14:07:09Z",              //
           "2018-02-29T14:07:09Z",              //
           "2018-03-05T24:07:09Z",              //
           "2018-03-05T14:60:09Z",              //
           "2018-03-05T14:07:60Z",              //
           "\xD9\xA2\xD9\xA0-03-05T14:07:09Z",  // digits of another script
       }) {
    EXPECT_EQ(read("GMT", kIso, text), std::nullopt) << text;
  }
}

TEST(DateFormatter, ReadsTheEdgesOfItsFields) {
  EXPECT_EQ(read("GMT", kIso, "2020-02-29T00:00:00Z"), 1582934400);
  EXPECT_EQ(read("GMT", kIso, "0001-01-01T00:00:00Z"), -62135596800);
  EXPECT_EQ(read("GMT", kIso, "2018-03-05T23:59:59+23:59"), 1520294399 - 86340);
  EXPECT_EQ(read("GMT", kIso, "2018-03-05T23:59:59-23:59"), 1520294399 + 86340);
}

TEST(DateFormatter, TakesUnnamedFieldsFromTheFirstDayOf2000) {
  EXPECT_EQ(read("GMT", "HH:mm", "01:30"), 946684800 + 90 * 60);
  EXPECT_EQ(read("GMT", "yyyy", "2001"), 978307200);
  EXPECT_EQ(read("GMT", "", ""), 946684800);
}

TEST(DateFormatter, TakesBlanksBeforeAFirstFieldAndNoLiteralForAMissingField) {
  EXPECT_EQ(read("GMT", "HH", "  00"), 946684800);
  EXPECT_EQ(read("GMT", "' 'HH", " 00"), 946684800);
  EXPECT_EQ(read("GMT", "' 'HH", "  00"), std::nullopt);
  EXPECT_EQ(read("GMT", "HH", "  "), std::nullopt);
  EXPECT_EQ(read("GMT", "MM'ab'", "ab"), std::nullopt);
  EXPECT_EQ(read("GMT", "Z'ab'", "+ab"), std::nullopt);
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

TEST(DateFormatter, WritesEveryDate) {
  const std::pair<std::int64_t, const char*> rows[] = {
      {-62135596800, "0001-01-01T00:00:00Z"},
      {253402300799, "9999-12-31T23:59:59Z"},
      {253402300800, "10000-01-01T00:00:00Z"},
      // Before the year 1, those of the other era are counted.
      {-62135596801, "0001-12-31T23:59:59Z"},
      {-62167219201, "0002-12-31T23:59:59Z"},
      {Date::min().time_since_epoch().count(), "292277022658-01-27T08:29:52Z"},
      {Date::max().time_since_epoch().count(), "292277026596-12-04T15:30:07Z"},
  };
  for (const auto& [time, text] : rows) EXPECT_EQ(written("GMT", kIso, time), text);
}

TEST(DateFormatter, WritesTheTimeAndTheYearOfTheZone) {
  EXPECT_EQ(written("Asia/Kathmandu", kIso, 253402300799), "10000-01-01T05:44:59+05:45");
  EXPECT_EQ(written("America/St_Johns", kIso, kVectors), "2018-03-05T09:37:09-03:30");
}

TEST(DateFormatter, RoundsOffsetsWithSecondsAndHalfAMinuteAwayFromZero) {
  // POSIX counts westwards.
  EXPECT_EQ(written("OFF-1:02:30", "Z", 0), "+0103");
  EXPECT_EQ(written("OFF1:02:30", "Z", 0), "-0103");
  EXPECT_EQ(written("OFF-0:53:28", kIso, -2500000000), "1890-10-11T20:26:20+00:53");
}

TEST(SharedIso8601DateFormatter, IsMadeOnceAndReadsBackWhatItWrites) {
  const DateFormatter& shared = sharedIso8601DateFormatter();
  EXPECT_EQ(&shared, &sharedIso8601DateFormatter());
  std::mt19937_64 random(20181105);
  for (const std::string zone : {"GMT", "Europe/Berlin", "America/St_Johns", "Asia/Kathmandu",
                                 "Australia/Lord_Howe", "Pacific/Apia"}) {
    const ScopedEnvironment inZone("TZ", zone);
    for (int i = 0; i < 500; ++i) {
      const auto time = static_cast<std::int64_t>(random() % 315000000000) - 62000000000;
      const auto text = shared.stringFromDate(Date(std::chrono::seconds(time)));
      ASSERT_EQ(read(zone, kIso, text), time) << text;
      ASSERT_TRUE(shared.dateFromString(text) == Date(std::chrono::seconds(time))) << text;
    }
  }
}

}  // namespace
}  // namespace Vastel_Connect

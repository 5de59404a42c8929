#include "json/mapping/DateFormatter.h"

#include <gtest/gtest.h>

#include <charconv>
#include <ctime>
#include <limits>
#include <random>
#include <set>

#include "tests/json/mapping/InZone.h"
#include "tests/json/mapping/UnixTime.h"
#include "tests/platform/Data.h"

namespace Vastel_Connect {
namespace {

constexpr std::string_view kIsoPattern = "yyyy-MM-dd'T'HH:mm:ssZZZZZ";

Date at(std::int64_t unixTime) {
  return Date(std::chrono::seconds(unixTime));
}

DateFormatter formatter(std::string_view pattern) {
  return *DateFormatter::forPattern(pattern);
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
    if (!zone) {
      ++skipped;
      continue;
    }
    ++used;
    SCOPED_TRACE(row.at(0) + " " + row.at(1));
    const InZone inZone(*zone);
    EXPECT_EQ(formatter(row.at(1)).stringFromDate(at(1520255229)), row.at(2));
    if (row.at(1).starts_with("yyyy")) {
      EXPECT_EQ(unixTime(formatter(row.at(1)).dateFromString(row.at(2))), 1520255229);
    }
  }
  EXPECT_EQ(used, 63);
  EXPECT_EQ(skipped, 57);
}

TEST(DateFormatter, ReadsTheRowsOfTheVectorsAsAWhole) {
  const InZone zone("GMT");
  for (const auto& row : readTable("iso8601_parse.tsv")) {
    SCOPED_TRACE(row.at(0));
    const auto text = jsonString(row.at(0));
    const auto length = std::to_string(text.size());
    const bool readWhole = row.size() > 2 && row[2] == length + "/" + length;
    EXPECT_EQ(unixTime(sharedIso8601DateFormatter().dateFromString(text)),
              readWhole ? std::optional(number(row[1])) : std::nullopt);
  }
}

TEST(DateFormatter, IsAbsentForAPatternThatIsNone) {
  EXPECT_FALSE(DateFormatter::forPattern("yy-MM-dd"));
  EXPECT_FALSE(DateFormatter::forPattern("'open"));
}

TEST(DateFormatter, RejectsWhatDoesNotFollowThePattern) {
  const auto iso = formatter(kIsoPattern);
  for (const std::string text : {
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
    EXPECT_EQ(unixTime(iso.dateFromString(text)), std::nullopt) << text;
  }
}

TEST(DateFormatter, ReadsADayThatExistsInALeapYear) {
  EXPECT_EQ(unixTime(formatter(kIsoPattern).dateFromString("2020-02-29T00:00:00Z")), 1582934400);
}

TEST(DateFormatter, ReadsTheLargestOffsets) {
  const auto iso = formatter(kIsoPattern);
  EXPECT_EQ(unixTime(iso.dateFromString("2018-03-05T14:07:09+23:59")), 1520258829 - 86340);
  EXPECT_EQ(unixTime(iso.dateFromString("2018-03-05T14:07:09-23:59")), 1520258829 + 86340);
}

TEST(DateFormatter, ReadsTheFirstYear) {
  EXPECT_EQ(unixTime(formatter(kIsoPattern).dateFromString("0001-01-01T00:00:00Z")), -62135596800);
}

TEST(DateFormatter, TakesNoLiteralForAMissingField) {
  EXPECT_EQ(unixTime(formatter("MM'ab'").dateFromString("ab")), std::nullopt);
  EXPECT_EQ(unixTime(formatter("Z'ab'").dateFromString("+ab")), std::nullopt);
}

TEST(DateFormatter, ReadsTheDefaultZonesTimeWithoutAnOffset) {
  const InZone zone("Europe/Berlin");
  const auto local = formatter("yyyy-MM-dd HH:mm:ss");
  EXPECT_EQ(unixTime(local.dateFromString("2018-03-05 14:07:09")), 1520255229);
  EXPECT_EQ(unixTime(local.dateFromString("2018-07-05 14:07:09")), 1530792429);
}

TEST(DateFormatter, RejectsATimeThatTheClocksSkip) {
  const InZone zone("Europe/Berlin");
  const auto local = formatter("yyyy-MM-dd HH:mm:ss");
  EXPECT_EQ(unixTime(local.dateFromString("2018-03-25 01:59:59")), 1521939599);
  EXPECT_EQ(unixTime(local.dateFromString("2018-03-25 02:00:00")), std::nullopt);
  EXPECT_EQ(unixTime(local.dateFromString("2018-03-25 02:59:59")), std::nullopt);
  EXPECT_EQ(unixTime(local.dateFromString("2018-03-25 03:00:00")), 1521939600);
}

TEST(DateFormatter, TakesTheSecondOfATimeThatComesTwice) {
  const InZone zone("Europe/Berlin");
  const auto local = formatter("yyyy-MM-dd HH:mm:ss");
  EXPECT_EQ(unixTime(local.dateFromString("2018-10-28 01:59:59")), 1540684799);
  EXPECT_EQ(unixTime(local.dateFromString("2018-10-28 02:00:00")), 1540688400);
  EXPECT_EQ(unixTime(local.dateFromString("2018-10-28 02:59:59")), 1540691999);
  EXPECT_EQ(unixTime(local.dateFromString("2018-10-28 03:00:00")), 1540692000);
}

TEST(DateFormatter, ReadsTimesNearTwoChangesOfTheClocksWithinTwoDays) {
  // An hour ahead from the 100th day of the year at 0:00 until noon of the day after.
  const InZone zone("AAA0BBB,J100/0,J101/12");
  const auto local = formatter("yyyy-MM-dd HH:mm:ss");
  EXPECT_EQ(unixTime(local.dateFromString("2018-04-10 03:00:00")), 1523325600);
  EXPECT_EQ(unixTime(local.dateFromString("2018-04-11 10:00:00")), 1523437200);
}

TEST(DateFormatter, TakesUnnamedFieldsFromTheFirstDayOf2000) {
  const InZone zone("GMT");
  EXPECT_EQ(unixTime(formatter("HH:mm").dateFromString("01:30")), 946684800 + 90 * 60);
  EXPECT_EQ(unixTime(formatter("yyyy").dateFromString("2001")), 978307200);
  EXPECT_EQ(unixTime(formatter("").dateFromString("")), 946684800);
}

TEST(DateFormatter, TakesBlanksBeforeAFirstFieldOnly) {
  const InZone zone("GMT");
  EXPECT_EQ(unixTime(formatter("HH").dateFromString("  00")), 946684800);
  EXPECT_EQ(unixTime(formatter("' 'HH").dateFromString(" 00")), 946684800);
  EXPECT_EQ(unixTime(formatter("' 'HH").dateFromString("  00")), std::nullopt);
  EXPECT_EQ(unixTime(formatter("HH").dateFromString("  ")), std::nullopt);
}

TEST(DateFormatter, WritesEveryDate) {
  const InZone zone("GMT");
  const auto iso = formatter(kIsoPattern);
  EXPECT_EQ(iso.stringFromDate(at(-62135596800)), "0001-01-01T00:00:00Z");
  EXPECT_EQ(iso.stringFromDate(at(253402300799)), "9999-12-31T23:59:59Z");
  EXPECT_EQ(iso.stringFromDate(at(253402300800)), "10000-01-01T00:00:00Z");
  // Before the year 1, those of the other era are counted.
  EXPECT_EQ(iso.stringFromDate(at(-62135596801)), "0001-12-31T23:59:59Z");
  EXPECT_EQ(iso.stringFromDate(at(-62167219201)), "0002-12-31T23:59:59Z");
  EXPECT_EQ(iso.stringFromDate(Date::min()), "292277022658-01-27T08:29:52Z");
  EXPECT_EQ(iso.stringFromDate(Date::max()), "292277026596-12-04T15:30:07Z");
}

TEST(DateFormatter, WritesTheYearOfTheZone) {
  const InZone zone("Asia/Kathmandu");
  EXPECT_EQ(formatter(kIsoPattern).stringFromDate(at(253402300799)), "10000-01-01T05:44:59+05:45");
}

TEST(DateFormatter, RoundsOffsetsWithSeconds) {
  const InZone zone("Europe/Berlin");  // 0:53:28 until April 1893
  const std::time_t before1893 = -2500000000;
  if (std::localtime(&before1893)->tm_gmtoff == 3600) {
    GTEST_SKIP() << "the system's zones hold no time before 1901";
  }
  EXPECT_EQ(formatter(kIsoPattern).stringFromDate(at(before1893)), "1890-10-11T20:26:20+00:53");
}

TEST(DateFormatter, RoundsHalfAMinuteOfAnOffsetAwayFromZero) {
  for (const std::string sign : {"+", "-"}) {
    // POSIX counts westwards.
    const InZone zone("OFF" + std::string(sign == "+" ? "-" : "") + "1:02:30");
    EXPECT_EQ(formatter("Z").stringFromDate(at(0)), sign + "0103");
  }
}

TEST(SharedIso8601DateFormatter, IsMadeOnce) {
  EXPECT_EQ(&sharedIso8601DateFormatter(), &sharedIso8601DateFormatter());
}

TEST(SharedIso8601DateFormatter, WritesTheDefaultZonesTime) {
  const std::pair<const char*, const char*> rows[] = {
      {"GMT", "2018-03-05T13:07:09Z"},
      {"Europe/Berlin", "2018-03-05T14:07:09+01:00"},
      {"America/St_Johns", "2018-03-05T09:37:09-03:30"},
  };
  for (const auto& [zone, text] : rows) {
    const InZone inZone(zone);
    EXPECT_EQ(sharedIso8601DateFormatter().stringFromDate(at(1520255229)), text);
  }
}

TEST(SharedIso8601DateFormatter, ReadsBackWhatItWrites) {
  std::mt19937_64 random(20181105);
  for (const std::string zone : {"GMT", "Europe/Berlin", "America/St_Johns", "Asia/Kathmandu",
                                 "Australia/Lord_Howe", "Pacific/Apia"}) {
    const InZone inZone(zone);
    for (int i = 0; i < 500; ++i) {
      const auto date = at(static_cast<std::int64_t>(random() % 315000000000) - 62000000000);
      const auto text = sharedIso8601DateFormatter().stringFromDate(date);
      ASSERT_EQ(unixTime(sharedIso8601DateFormatter().dateFromString(text)), unixTime(date))
          << text;
    }
  }
}

}  // namespace
}  // namespace Vastel_Connect

// Compares Foundation with the tables that decide the portable text work. Where one Foundation is
// known to differ, the rows that it differs on are left out for it, and no others.
#import <Foundation/Foundation.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#import "platform/macos/Text.h"
#include "tests/platform/Data.h"

namespace Vastel_Connect {
namespace {

#ifdef GNUSTEP
constexpr bool kGNUstep = true;
#else
constexpr bool kGNUstep = false;
#endif

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kLongS = "\xC5\xBF";
constexpr const char* kStrayCopyrightSign = "\xA9";

std::string bytesOf(NSData* data) {
  return {static_cast<const char*>(data.bytes), data.length};
}

bool isAscii(const std::string& text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 128; });
}

/// The rows of a table for which `compared` holds. Fails the test when fewer than half are left.
template <typename Compared>
std::vector<std::vector<std::string>> rowsOf(std::string_view name, Compared compared) {
  auto rows = readTable(name);
  const auto all = rows.size();
  std::erase_if(rows, [&](const auto& row) { return !compared(row); });
  EXPECT_GT(rows.size() * 2, all) << name;
  return rows;
}

/// What the check refuses never reaches Foundation, and what is odd in its authority is taken
/// differently by each release. What is left is passed on exactly as it was.
TEST(Foundation, KeepsTheTextOfEachOrdinaryUrl) {
  const std::regex ordinary(R"([a-z][a-z0-9+.\-]*://[A-Za-z0-9.\-]+(:[0-9]+)?([/?#][^\[\]]*)?)");
  int compared = 0;
  for (const auto& row : readTable("nsurl.tsv")) {
    const std::string text = jsonString(row[0]);
    if (row[1] != "accept" || !std::regex_match(text, ordinary)) continue;
    if (kGNUstep && text.ends_with(";")) continue;
    @autoreleasepool {
      NSURL* url = [[NSURL alloc] initWithString:foundationText(text)];
      EXPECT_EQ(utf8Text(url.absoluteString), text);
    }
    ++compared;
  }
  EXPECT_GT(compared, 100);
}

/// GNUstep's does without padding.
TEST(Foundation, DecodesBase64Alike) {
  for (const auto& row : rowsOf("base64.tsv", [](const auto& cells) {
         return !kGNUstep || jsonString(cells[0]).size() % 4 == 0;
       })) {
    @autoreleasepool {
      NSString* text = foundationText(jsonString(row[0]));
      NSData* data = [[NSData alloc] initWithBase64EncodedString:text options:0];
      ASSERT_EQ(data != nil, row[1] != "reject") << row[0];
      if (data) EXPECT_EQ(bytesOf(data), hexBytes(row[1])) << row[0];
    }
  }
}

/// Apple's drops a byte order mark, and takes a stray byte A9 for the sign of another encoding.
TEST(Foundation, ReadsUtf8Alike) {
  for (const auto& row : rowsOf("utf8.tsv", [](const auto& cells) {
         const std::string bytes = hexBytes(cells[0]);
         const bool differs =
             bytes.starts_with(kByteOrderMark) ||
             (cells[1] == "reject" && bytes.find(kStrayCopyrightSign) != bytes.npos);
         return kGNUstep || !differs;
       })) {
    @autoreleasepool {
      const std::string bytes = row[0] == "\"\"" ? "" : hexBytes(row[0]);
      NSString* text = [[NSString alloc] initWithBytes:bytes.data()
                                                length:bytes.size()
                                              encoding:NSUTF8StringEncoding];
      ASSERT_EQ(text != nil, row[1] == "valid") << row[0];
      if (text) EXPECT_EQ(utf8Text(text), bytes) << row[0];
    }
  }
}

/// The flag that an argument sets, by Foundation's comparison; "none" if it sets no flag.
std::string flagOf(NSString* argument) {
  const struct {
    NSString* spelling;
    const char* flag;
  } rows[] = {
      {@"/changelog", "FlagChangeLog"},
      {@"-changelog", "FlagChangeLog"},
      {@"/help", "FlagHelp"},
      {@"-help", "FlagHelp"},
      {@"/h", "FlagHelp"},
      {@"-h", "FlagHelp"},
      {@"/log", "FlagLog"},
      {@"-log", "FlagLog"},
      {@"/jsonlog", "FlagJsonLog"},
      {@"-jsonlog", "FlagJsonLog"},
      {@"/showuri", "FlagShowUri"},
      {@"-showuri", "FlagShowUri"},
  };
  for (const auto& [spelling, flag] : rows) {
    if ([argument caseInsensitiveCompare:spelling] == NSOrderedSame) return flag;
  }
  return "none";
}

/// GNUstep's passes over a byte order mark, and knows only one small "s".
TEST(Foundation, ComparesSwitchesAlike) {
  for (const auto& row : rowsOf("switches.tsv", [](const auto& cells) {
         const std::string text = jsonString(cells[0]);
         return !kGNUstep || (!text.starts_with(kByteOrderMark) && text.find(kLongS) == text.npos);
       })) {
    @autoreleasepool {
      EXPECT_EQ(flagOf(foundationText(jsonString(row[0]))), row[1]) << row[0];
    }
  }
}

/// GNUstep's escapes no solidus, and all that is not ASCII.
TEST(Foundation, EscapesJsonAlike) {
  for (const auto& row : rowsOf("json_string_escape.tsv", [](const auto& cells) {
         const std::string text = jsonString(cells[0]);
         return !kGNUstep || (isAscii(text) && text.find('/') == text.npos);
       })) {
    @autoreleasepool {
      NSArray* array = @[ foundationText(jsonString(row[0])) ];
      NSData* data = [NSJSONSerialization dataWithJSONObject:array options:0 error:nullptr];
      EXPECT_EQ(bytesOf(data), "[\"" + row[1] + "\"]") << row[0];
    }
  }
}

/// The formatter of a row, whose first cell is a locale, "tz" and a zone's name, or "off" and an
/// offset in seconds.
NSDateFormatter* formatterOf(const std::vector<std::string>& row) {
  NSDateFormatter* formatter = [[NSDateFormatter alloc] init];
  NSString* locale = @"en_US";
  NSString* zone = @"Europe/Berlin";
  formatter.timeZone = [NSTimeZone timeZoneWithName:zone];
  if (row[0].starts_with("tz ")) {
    formatter.timeZone = [NSTimeZone timeZoneWithName:foundationText(row[0].substr(3))];
  } else if (row[0].starts_with("off ")) {
    formatter.timeZone = [NSTimeZone timeZoneForSecondsFromGMT:std::stoi(row[0].substr(4))];
  } else {
    locale = foundationText(row[0]);
  }
  formatter.locale = [[NSLocale alloc] initWithLocaleIdentifier:locale];
  formatter.dateFormat = foundationText(row[1]);
  return formatter;
}

bool hasDate(const std::vector<std::string>& row) {
  return row[1].find('y') != row[1].npos;
}

/// Whether a row is the same by the locale data of any release: digits and calendars of a
/// language's own are not.
bool isSettled(const std::vector<std::string>& row) {
  return isAscii(row[2]) && (!hasDate(row) || row[2].starts_with("2018-03-0"));
}

/// Asked with each Foundation, for Apple's may not be at hand.
TEST(Foundation, IsComparedOnTheSettledHalfOfTheDates) {
  EXPECT_EQ(rowsOf("date_format.tsv", isSettled).size(), 70U);
}

TEST(Foundation, WritesDatesAlike) {
  NSDate* moment = [NSDate dateWithTimeIntervalSince1970:1520255229];
  for (const auto& row : rowsOf("date_format.tsv", [](const auto& cells) {
         // Newer data of GNUstep's gives this locale another calendar.
         return kGNUstep ? cells[0] != "ar_SA" || !hasDate(cells) : isSettled(cells);
       })) {
    @autoreleasepool {
      EXPECT_EQ(utf8Text([formatterOf(row) stringFromDate:moment]), row[2]) << row[0] << row[1];
    }
  }
}

}  // namespace
}  // namespace Vastel_Connect

// The date formatter: the first line of an input is the pattern, the second a time zone's number,
// the rest a text to be read. Zones without changes, so that a date can be counted day by day.
#include <cstdlib>

#include "fuzz/Fuzz.h"
#include "fuzz/Reference.h"
#include "json/mapping/DateFormatter.h"

using namespace Vastel_Connect;

namespace {

struct Zone {
  const char* name;
  long minutes;
};

constexpr Zone kZones[] = {
    {"UTC0", 0}, {"<+0545>-5:45", 345}, {"<-0330>3:30", -210}, {"<+14>-14", 840}};

bool isLeap(long year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

long daysOf(long year, long month) {
  constexpr long kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return kDays[month - 1] + (month == 2 && isLeap(year) ? 1 : 0);
}

/// Seconds from 1970 to a local time, counted.
long secondsTo(const long (&fields)[6]) {
  long days = fields[2] - 1;
  for (long month = 1; month < fields[1]; ++month) days += daysOf(fields[0], month);
  for (long year = 1; year < fields[0]; ++year) days += isLeap(year) ? 366 : 365;
  return ((days - 719162) * 24 + fields[3]) * 3600 + fields[4] * 60 + fields[5];
}

/// A pattern as what it is made of: a field's letters, or "'" and a text.
std::optional<std::vector<std::string>> piecesOf(std::string_view pattern) {
  std::vector<std::string> pieces;
  while (!pattern.empty()) {
    const char c = pattern.front();
    std::size_t length = 1;
    if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z')) {
      while (length < pattern.size() && pattern[length] == c) ++length;
      const std::string field(pattern.substr(0, length));
      for (const char* known : {"yyyy", "MM", "dd", "HH", "mm", "ss", "Z", "ZZZZZ", ""}) {
        if (*known == '\0') return std::nullopt;
        if (field == known) break;
      }
      pieces.push_back(field);
    } else if (c == '\'' && pattern.substr(0, 2) != "''") {
      std::string text = "'";
      for (;; ++length) {
        if (length >= pattern.size()) return std::nullopt;
        if (pattern[length] != '\'') {
          text += pattern[length];
        } else if (length + 1 < pattern.size() && pattern[length + 1] == '\'') {
          text += pattern[length++];
        } else {
          break;
        }
      }
      ++length;
      pieces.push_back(text);
    } else {
      pieces.push_back(std::string("'") + c);
      length = c == '\'' ? 2 : 1;
    }
    pattern.remove_prefix(length);
  }
  return pieces;
}

bool readDigits(std::string_view& text, std::size_t count, long& number) {
  if (text.size() < count) return false;
  const std::string digits(text.substr(0, count));
  if (digits.find_first_not_of("0123456789") != digits.npos) return false;
  number = std::stol(digits);
  text.remove_prefix(count);
  return true;
}

bool readOffset(std::string_view& text, long& minutes) {
  while (text.substr(0, 1) == " ") text.remove_prefix(1);
  for (const std::string_view zero : {"Z", "z", "GMT"}) {
    if (text.substr(0, zero.size()) != zero) continue;
    minutes = 0;
    text.remove_prefix(zero.size());
    return true;
  }
  const std::string sign(text.substr(0, 1));
  if (sign != "+" && sign != "-") return false;
  text.remove_prefix(1);
  long hour = 0;
  long minute = 0;
  if (!readDigits(text, 2, hour)) return false;
  if (text.substr(0, 1) == ":") text.remove_prefix(1);
  if (!readDigits(text, 2, minute) || hour > 23 || minute > 59) return false;
  minutes = (hour * 60 + minute) * (sign == "-" ? -1 : 1);
  return true;
}

std::optional<long> readDate(const std::vector<std::string>& pieces, std::string_view text,
                             long zone) {
  constexpr std::string_view kNames[] = {"yyyy", "MM", "dd", "HH", "mm", "ss"};
  long fields[] = {2000, 1, 1, 0, 0, 0};
  long offset = zone;
  const bool blanksFirst = !pieces.empty() && pieces.front().front() != '\'';
  while (blanksFirst && text.substr(0, 1) == " ") text.remove_prefix(1);
  for (const std::string& piece : pieces) {
    if (piece.front() == '\'') {
      if (text.substr(0, piece.size() - 1) != piece.substr(1)) return std::nullopt;
      text.remove_prefix(piece.size() - 1);
    } else if (piece.front() == 'Z') {
      if (!readOffset(text, offset)) return std::nullopt;
    } else {
      std::size_t field = 0;
      while (kNames[field] != piece) ++field;
      if (!readDigits(text, piece.size(), fields[field])) return std::nullopt;
    }
  }
  if (!text.empty() || fields[0] < 1 || fields[1] < 1 || fields[1] > 12) return std::nullopt;
  if (fields[2] < 1 || fields[2] > daysOf(fields[0], fields[1])) return std::nullopt;
  if (fields[3] > 23 || fields[4] > 59 || fields[5] > 59) return std::nullopt;
  return secondsTo(fields) - offset * 60;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  auto text = fuzz::textOf(data, size);
  const auto pattern = fuzz::takeField(text);
  const auto number = fuzz::takeField(text);
  const Zone& zone = kZones[(number.empty() ? 0U : static_cast<unsigned char>(number[0])) % 4];
  ::setenv("TZ", zone.name, 1);

  const auto formatter = DateFormatter::forPattern(pattern);
  const auto pieces = piecesOf(pattern);
  fuzz::expect(formatter.has_value() == pieces.has_value(), "is it a pattern");
  if (!formatter) return 0;
  const auto date = formatter->dateFromString(text);
  const auto expected = readDate(*pieces, text, zone.minutes);
  fuzz::expect(date.has_value() == expected.has_value(), "is it a date");
  if (!date) return 0;
  fuzz::expect(date->time_since_epoch().count() == *expected, "which date");
  // A year of the zone without four digits is written, but no pattern reads it.
  const long local = *expected + zone.minutes * 60;
  if (local < secondsTo({1, 1, 1, 0, 0, 0}) || local >= secondsTo({10000, 1, 1, 0, 0, 0})) return 0;
  // What is written is read back as the same; what the pattern leaves out may differ.
  const auto written = formatter->stringFromDate(*date);
  const auto again = readDate(*pieces, written, zone.minutes);
  fuzz::expect(again.has_value(), "a written date is a date");
  const auto twice = formatter->stringFromDate(Date(std::chrono::seconds(*again)));
  const bool offsetOnly = pattern.find('Z') != pattern.npos;
  fuzz::expect(offsetOnly || twice == written, "a written date is read back");
  const auto& iso = sharedIso8601DateFormatter();
  const auto isoText = iso.stringFromDate(*date);
  fuzz::expect(iso.dateFromString(isoText) == date, "the shared formatter");
  return 0;
}

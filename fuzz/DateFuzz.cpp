// The date formatter: the first line of an input is the pattern, the second a time zone's number,
// the rest a text to be read. Zones without changes, so that a date can be counted day by day.
#include <cstdlib>
#include <regex>
#include <set>

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

constexpr auto kAtOnce = std::regex_constants::match_continuous;

/// The form of each field.
const std::regex& formOf(const std::string& field) {
  static const std::regex four("[0-9]{4}");
  static const std::regex two("[0-9]{2}");
  static const std::regex offset(" *(?:Z|z|GMT|([+-])([01][0-9]|2[0-3]):?([0-5][0-9]))");
  return field[0] == 'Z' ? offset : field[0] == 'y' ? four : two;
}

/// A pattern as what it is made of: a field's letters, or "'" and a text.
std::optional<std::vector<std::string>> piecesOf(std::string rest) {
  static const std::regex form(R"(([A-Za-z])\1*|''|'((?:[^']|'')*)'|[^A-Za-z'])");
  static const std::set<std::string> fields = {"yyyy", "MM", "dd", "HH", "mm", "ss", "Z", "ZZZZZ"};
  std::vector<std::string> pieces;
  while (!rest.empty()) {
    std::smatch found;
    if (!std::regex_search(rest, found, form, kAtOnce)) return std::nullopt;
    const std::string text = found[2].matched ? found.str(2) : found.str();
    if (found[1].matched && !fields.contains(text)) return std::nullopt;
    pieces.push_back(found[1].matched ? text
                                      : "'" + std::regex_replace(text, std::regex("''"), "'"));
    rest = found.suffix().str();
  }
  return pieces;
}

std::optional<long> readDate(const std::vector<std::string>& pieces, std::string text, long zone) {
  constexpr std::string_view kNames = "yMdHms";
  long fields[] = {2000, 1, 1, 0, 0, 0};
  long offset = zone;
  if (!pieces.empty() && pieces.front().front() != '\'') {
    text.erase(0, text.find_first_not_of(' '));
  }
  for (const std::string& piece : pieces) {
    std::smatch found;
    if (piece.front() == '\'') {
      if (!text.starts_with(piece.substr(1))) return std::nullopt;
      text.erase(0, piece.size() - 1);
      continue;
    }
    if (!std::regex_search(text, found, formOf(piece), kAtOnce)) return std::nullopt;
    if (piece.front() != 'Z') {
      fields[kNames.find(piece.front())] = std::stol(found.str());
    } else {
      const long minutes =
          found[1].matched ? std::stol(found.str(2)) * 60 + std::stol(found.str(3)) : 0;
      offset = found.str(1) == "-" ? -minutes : minutes;
    }
    text = found.suffix().str();
  }
  if (!text.empty() || fields[0] < 1 || fields[1] < 1 || fields[1] > 12) return std::nullopt;
  if (fields[2] < 1 || fields[2] > daysOf(fields[0], fields[1])) return std::nullopt;
  if (fields[3] > 23 || fields[4] > 59 || fields[5] > 59) return std::nullopt;
  return secondsTo(fields) - offset * 60;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  auto fields = fuzz::textOf(data, size);
  const std::string pattern(fuzz::takeField(fields));
  const auto number = fuzz::takeField(fields);
  const std::string text(fields);
  // std::regex takes room on the stack for each character.
  if (pattern.size() > 256) return 0;
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

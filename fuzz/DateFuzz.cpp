// The reader and the writer of ISO 8601 dates: the first sign of an input is a time zone's number,
// the rest a text to be read. The C library tells when it was.
#include <cstdlib>
#include <ctime>
#include <regex>

#include "fuzz/Fuzz.h"
#include "json/mapping/DateFormatter.h"

using namespace Vastel_Connect;

namespace {

struct Zone {
  const char* name;
  long seconds;
};

constexpr Zone kZones[] = {
    {"UTC0", 0}, {"<+0545>-5:45", 20700}, {"<-0330>3:30", -12600}, {"<+14>-14", 50400}};

/// The Unix time of a date and its offset; absent for what is none.
std::optional<long> readDate(const std::string& text) {
  static const std::regex form(
      " *([0-9]{4})-([0-9]{2})-([0-9]{2})T([0-9]{2}):([0-9]{2}):([0-9]{2})"
      " *(?:Z|z|GMT|([+-])([01][0-9]|2[0-3]):?([0-5][0-9]))");
  std::smatch found;
  if (!std::regex_match(text, found, form)) return std::nullopt;
  const auto number = [&found](std::size_t group) { return std::stoi("0" + found.str(group)); };
  std::tm date{};
  date.tm_year = number(1) - 1900;
  date.tm_mon = number(2) - 1;
  date.tm_mday = number(3);
  date.tm_hour = number(4);
  date.tm_min = number(5);
  date.tm_sec = number(6);
  const long time = ::timegm(&date);
  // Of one that does not exist, the library makes another.
  if (number(1) < 1 || date.tm_mon != number(2) - 1 || date.tm_mday != number(3) ||
      date.tm_hour != number(4) || date.tm_min != number(5) || date.tm_sec != number(6)) {
    return std::nullopt;
  }
  return time - (found[7] == "-" ? -60 : 60) * (number(8) * 60 + number(9));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // std::regex takes room on the stack for each character.
  if (size == 0 || size > 256) return 0;
  const Zone& zone = kZones[data[0] % 4];
  ::setenv("TZ", zone.name, 1);
  const std::string text(fuzz::textOf(data + 1, size - 1));
  const auto& formatter = sharedIso8601DateFormatter();
  const auto date = formatter.dateFromString(text);
  const auto expected = readDate(text);
  fuzz::expect(date.has_value() == expected.has_value(), "is it a date");
  if (!date) return 0;
  fuzz::expect(date->time_since_epoch().count() == *expected, "which date");
  // A year of the zone without four digits is written, but not read.
  const long local = *expected + zone.seconds;
  if (local < -62135596800 || local >= 253402300800) return 0;
  fuzz::expect(readDate(formatter.stringFromDate(*date)) == expected, "what is written");
  return 0;
}

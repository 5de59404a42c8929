#include "json/mapping/DateFormatter.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>

#include "json/mapping/DefaultZone.h"
#include "text/Ascii.h"

namespace Vastel_Connect {
namespace {

namespace chrono = std::chrono;
using chrono::minutes;
using enum DateField;

/// A date and time as they are written.
struct Fields {
  std::int64_t& operator[](DateField field) { return numbers[static_cast<std::size_t>(field)]; }
  std::int64_t operator[](DateField field) const {
    return numbers[static_cast<std::size_t>(field)];
  }

  /// By DateField. What no digits stand for has a number as well, which nothing reads.
  std::array<std::int64_t, 9> numbers = {0, 2000, 1, 1, 0, 0, 0, 0, 0};
  std::optional<minutes> offset;
};

std::size_t digitsOf(DateField field) {
  return field == Year ? 4 : 2;
}

// ---- Writing

std::string digits(std::int64_t number, std::size_t width) {
  const std::string text = std::to_string(number);
  return std::string(width - std::min(width, text.size()), '0') + text;
}

std::string offsetText(minutes offset, std::string_view separator) {
  const auto size = chrono::abs(offset).count();
  // Appended, since GCC 12 warns of "-" + digits(...) when it optimizes.
  std::string text = offset.count() < 0 ? "-" : "+";
  return text.append(digits(size / 60, 2)).append(separator).append(digits(size % 60, 2));
}

std::string pieceText(const DatePiece& piece, const Fields& fields) {
  const minutes offset = fields.offset.value_or(minutes{});
  switch (piece.field) {
    case Literal:
      return piece.literal;
    case Offset:
      return offsetText(offset, "");
    case IsoOffset:
      return offset == minutes(0) ? "Z" : offsetText(offset, ":");
    default:
      return digits(fields[piece.field], digitsOf(piece.field));
  }
}

Fields fieldsOfDate(Date date) {
  // The calendar repeats every 400 years. Within one such time, no year is too large for it.
  constexpr chrono::seconds kCycle = chrono::days(146097);
  const auto offset = defaultZoneOffset(date);
  const auto local = Date(date.time_since_epoch() % kCycle) + offset;
  const auto midnight = chrono::floor<chrono::days>(local);
  const chrono::year_month_day day(midnight);
  const chrono::hh_mm_ss time(local - midnight);
  const auto cycles = date.time_since_epoch() / kCycle;
  const auto year = static_cast<int>(day.year()) + 400 * cycles;
  Fields fields;
  fields[Year] = year > 0 ? year : 1 - year;
  fields[Month] = static_cast<unsigned>(day.month());
  fields[Day] = static_cast<unsigned>(day.day());
  fields[Hour] = time.hours().count();
  fields[Minute] = time.minutes().count();
  fields[Second] = time.seconds().count();
  fields.offset = offset;
  return fields;
}

// ---- Reading. Each function takes what it reads from the beginning of the text.

bool take(std::string_view& text, std::string_view beginning) {
  if (!text.starts_with(beginning)) return false;
  text.remove_prefix(beginning.size());
  return true;
}

void takeBlanks(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
}

std::optional<std::int64_t> takeDigits(std::string_view& text, std::size_t width) {
  if (text.size() < width) return std::nullopt;
  std::int64_t number = 0;
  for (const char c : text.substr(0, width)) {
    if (!isAsciiDigit(c)) return std::nullopt;
    number = number * 10 + (c - '0');
  }
  text.remove_prefix(width);
  return number;
}

bool takeOffset(std::string_view& text, std::optional<minutes>& offset) {
  takeBlanks(text);
  if (take(text, "Z") || take(text, "z") || take(text, "GMT")) {
    offset = minutes(0);
    return true;
  }
  const bool west = text.starts_with('-');
  if (!west && !text.starts_with('+')) return false;
  text.remove_prefix(1);
  const auto hourPart = takeDigits(text, 2);
  take(text, ":");
  const auto minutePart = takeDigits(text, 2);
  if (!hourPart || !minutePart || *hourPart > 23 || *minutePart > 59) return false;
  offset = (west ? -1 : 1) * (chrono::hours(*hourPart) + minutes(*minutePart));
  return true;
}

bool takePiece(std::string_view& text, const DatePiece& piece, Fields& fields) {
  switch (piece.field) {
    case Literal:
      return take(text, piece.literal);
    case Offset:
    case IsoOffset:
      return takeOffset(text, fields.offset);
    default: {
      const auto number = takeDigits(text, digitsOf(piece.field));
      if (number) fields[piece.field] = *number;
      return number.has_value();
    }
  }
}

/// Absent for a day or a time of day that does not exist.
std::optional<Date> dateOfFields(const Fields& fields) {
  const auto number = [&](DateField field) { return static_cast<int>(fields[field]); };
  const auto day = chrono::year(number(Year)) / number(Month) / number(Day);
  if (!day.ok() || fields[Year] < 1) return std::nullopt;
  if (fields[Hour] > 23 || fields[Minute] > 59 || fields[Second] > 59) return std::nullopt;
  const auto local = chrono::local_days(day) + chrono::hours(fields[Hour]) +
                     minutes(fields[Minute]) + chrono::seconds(fields[Second]);
  if (!fields.offset) return dateInDefaultZone(local);
  return Date(local.time_since_epoch()) - *fields.offset;
}

}  // namespace

std::optional<DateFormatter> DateFormatter::forPattern(std::string_view pattern) {
  auto pieces = parseDatePattern(pattern);
  if (!pieces) return std::nullopt;
  return DateFormatter(*std::move(pieces));
}

std::string DateFormatter::stringFromDate(Date date) const {
  const auto fields = fieldsOfDate(date);
  std::string text;
  for (const auto& piece : pieces_) text += pieceText(piece, fields);
  return text;
}

std::optional<Date> DateFormatter::dateFromString(std::string_view text) const {
  Fields fields;
  if (!pieces_.empty() && pieces_.front().field != Literal) takeBlanks(text);
  for (const auto& piece : pieces_) {
    if (!takePiece(text, piece, fields)) return std::nullopt;
  }
  if (!text.empty()) return std::nullopt;
  return dateOfFields(fields);
}

const DateFormatter& sharedIso8601DateFormatter() {
  // NOLINTNEXTLINE(bugprone-unchecked-optional-access): the pattern is right.
  static const DateFormatter formatter = *DateFormatter::forPattern("yyyy-MM-dd'T'HH:mm:ssZZZZZ");
  return formatter;
}

}  // namespace Vastel_Connect

#include "json/mapping/DateFormatter.h"

#include <algorithm>
#include <chrono>

#include "json/mapping/DefaultZone.h"
#include "text/Ascii.h"

namespace Vastel_Connect {
namespace {

namespace chrono = std::chrono;
using chrono::minutes;

/// A date and time as they are written.
struct Fields {
  long year = 2000;
  long month = 1;
  long day = 1;
  long hour = 0;
  long minute = 0;
  long second = 0;
  std::optional<minutes> offset;

  /// Where a field of digits is kept; null for another field.
  long* number(DateField field) {
    switch (field) {
      case DateField::Year:
        return &year;
      case DateField::Month:
        return &month;
      case DateField::Day:
        return &day;
      case DateField::Hour:
        return &hour;
      case DateField::Minute:
        return &minute;
      case DateField::Second:
        return &second;
      default:
        return nullptr;
    }
  }
};

std::size_t digitsOf(DateField field) {
  return field == DateField::Year ? 4 : 2;
}

// ---- Writing

std::string digits(long number, std::size_t width) {
  const std::string text = std::to_string(number);
  return std::string(width - std::min(width, text.size()), '0') + text;
}

std::string offsetText(minutes offset, std::string_view separator) {
  const auto size = chrono::abs(offset).count();
  // Appended, since GCC 12 warns of "-" + digits(...) when it optimizes.
  std::string text = offset.count() < 0 ? "-" : "+";
  return text.append(digits(size / 60, 2)).append(separator).append(digits(size % 60, 2));
}

std::string pieceText(const DatePiece& piece, Fields& fields) {
  const minutes offset = fields.offset.value_or(minutes{});
  switch (piece.field) {
    case DateField::Literal:
      return piece.literal;
    case DateField::Offset:
      return offsetText(offset, "");
    case DateField::IsoOffset:
      return offset == minutes(0) ? "Z" : offsetText(offset, ":");
    default:
      return digits(*fields.number(piece.field), digitsOf(piece.field));
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
  const long year = static_cast<int>(day.year()) + 400 * (date.time_since_epoch() / kCycle);
  return {.year = year > 0 ? year : 1 - year,
          .month = static_cast<unsigned>(day.month()),
          .day = static_cast<unsigned>(day.day()),
          .hour = time.hours().count(),
          .minute = time.minutes().count(),
          .second = time.seconds().count(),
          .offset = offset};
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

std::optional<long> takeDigits(std::string_view& text, std::size_t width) {
  if (text.size() < width) return std::nullopt;
  long number = 0;
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
    case DateField::Literal:
      return take(text, piece.literal);
    case DateField::Offset:
    case DateField::IsoOffset:
      return takeOffset(text, fields.offset);
    default: {
      const auto number = takeDigits(text, digitsOf(piece.field));
      if (number) *fields.number(piece.field) = *number;
      return number.has_value();
    }
  }
}

/// Absent for a day or a time of day that does not exist.
std::optional<Date> dateOfFields(const Fields& fields) {
  const auto day = chrono::year(static_cast<int>(fields.year)) / static_cast<int>(fields.month) /
                   static_cast<int>(fields.day);
  if (!day.ok() || fields.year < 1) return std::nullopt;
  if (fields.hour > 23 || fields.minute > 59 || fields.second > 59) return std::nullopt;
  const auto local = chrono::local_days(day) + chrono::hours(fields.hour) + minutes(fields.minute) +
                     chrono::seconds(fields.second);
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
  auto fields = fieldsOfDate(date);
  std::string text;
  for (const auto& piece : pieces_) text += pieceText(piece, fields);
  return text;
}

std::optional<Date> DateFormatter::dateFromString(std::string_view text) const {
  Fields fields;
  if (!pieces_.empty() && pieces_.front().field != DateField::Literal) takeBlanks(text);
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

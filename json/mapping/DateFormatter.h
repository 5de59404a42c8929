#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "json/mapping/Date.h"
#include "json/mapping/DatePattern.h"

namespace Vastel_Connect {

/// Writes dates as texts and reads them back, after a pattern, in the process's default time zone
/// and the Gregorian calendar with digits 0 to 9, whatever the user's language. The calendar also
/// counts the years before its introduction. Any thread.
///
/// Reading is strict: each field has exactly the digits that it is written with and is in its
/// range, and the day exists. On purpose, as Foundation reads what others have written, both offset
/// fields read each of Z, z, GMT, +01:00 and +0100, and blanks may precede an offset and the whole
/// text, if its pattern begins with a field. On purpose, too, nothing may follow the text, though
/// Foundation finds a date at its beginning: half of what was meant is worse than none.
///
/// What a pattern does not name is that of 2000-01-01, 00:00:00. Without an offset, the text means
/// the default zone's time.
class DateFormatter {
 public:
  /// Absent when `pattern` is not one of parseDatePattern.
  [[nodiscard]] static std::optional<DateFormatter> forPattern(std::string_view pattern);

  /// Writes any date. The year is that of its era, in four digits or as many as it has: the year
  /// before 1 is 1 again. Only the years 1 to 9999 are read back as the same.
  [[nodiscard]] std::string stringFromDate(Date date) const;

  /// Absent when `text` does not follow the pattern, or its date or time does not exist.
  [[nodiscard]] std::optional<Date> dateFromString(std::string_view text) const;

 private:
  explicit DateFormatter(std::vector<DatePiece> pieces) : pieces_(std::move(pieces)) {}

  std::vector<DatePiece> pieces_;
};

/// The formatter of ISO 8601 dates with their offset, "2018-03-05T14:07:09+01:00": the default of
/// the date decoders and encoders, made once. It writes the default zone's time.
[[nodiscard]] const DateFormatter& sharedIso8601DateFormatter();

}  // namespace Vastel_Connect

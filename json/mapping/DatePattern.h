#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Vastel_Connect {

/// What a piece of a date pattern stands for.
enum class DateField { Literal, Year, Month, Day, Hour, Minute, Second, Offset, IsoOffset };

/// One field of a pattern, or the text between two of them.
struct DatePiece {
  DateField field;
  std::string literal;

  bool operator==(const DatePiece&) const = default;
};

/// The pieces of a date pattern. Absent when it holds other letters than these, another number of
/// them, or a quotation that does not end.
///
/// | Letters     | Stand for                                                          |
/// |-------------|--------------------------------------------------------------------|
/// | yyyy        | year, 0001 to 9999                                                 |
/// | MM, dd      | month, day of the month                                            |
/// | HH, mm, ss  | hour from 00 to 23, minute, second                                 |
/// | Z           | offset from UTC: +0100, -0330, +0000                               |
/// | ZZZZZ       | offset from UTC: +01:00, -03:30, and Z when it is zero             |
/// | 'text'      | the text; '' is one quotation mark, inside a quotation and outside |
/// | other signs | themselves                                                         |
[[nodiscard]] std::optional<std::vector<DatePiece>> parseDatePattern(std::string_view pattern);

}  // namespace Vastel_Connect

#include "json/mapping/DatePattern.h"

#include <gtest/gtest.h>

namespace Vastel_Connect {
namespace {

/// A pattern's pieces on one line: fields by their number, literals in angle brackets.
std::string pieces(std::string_view pattern) {
  const auto parsed = parseDatePattern(pattern);
  if (!parsed) return "absent";
  std::string text;
  for (const auto& piece : *parsed) {
    text += piece.field == DateField::Literal ? "<" + piece.literal + ">"
                                              : std::to_string(static_cast<int>(piece.field));
  }
  return text;
}

TEST(ParseDatePattern, KnowsItsFieldsAndKeepsOtherTexts) {
  const std::pair<const char*, const char*> rows[] = {
      {"yyyyMMddHHmmssZ", "1234567"},
      {"yyyy-MM-dd'T'HH:mm:ssZZZZZ", "1<->2<->3<T>4<:>5<:>68"},
      {"", ""},
      {"HH, mm.", "4<, >5<.>"},
      {"HH' o''clock 'mm", "4< o'clock >5"},
      {"HH''mm", "4<'>5"},
      {"''''", "<''>"},
      {"'HH'", "<HH>"},
      {"\xC3\xA9", "<\xC3\xA9>"},
  };
  for (const auto& [pattern, expected] : rows) EXPECT_EQ(pieces(pattern), expected);
}

TEST(ParseDatePattern, IsAbsentForOtherLettersAndOpenQuotations) {
  for (const char* pattern : {"yy", "yyyyy", "MMM", "d", "hh", "H", "m", "s", "SSS", "ZZ", "ZZZZ",
                              "ZZZZZZ", "T", "EEE", "'T", "'", "HH'", "'''"}) {
    EXPECT_EQ(pieces(pattern), "absent") << pattern;
  }
}

}  // namespace
}  // namespace Vastel_Connect

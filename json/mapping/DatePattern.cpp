#include "json/mapping/DatePattern.h"

#include <utility>

#include "text/Ascii.h"

namespace Vastel_Connect {
namespace {

constexpr std::pair<std::string_view, DateField> kFields[] = {
    {"yyyy", DateField::Year}, {"MM", DateField::Month},        {"dd", DateField::Day},
    {"HH", DateField::Hour},   {"mm", DateField::Minute},       {"ss", DateField::Second},
    {"Z", DateField::Offset},  {"ZZZZZ", DateField::IsoOffset},
};

std::optional<DateField> fieldOfLetters(std::string_view letters) {
  for (const auto& [known, field] : kFields) {
    if (known == letters) return field;
  }
  return std::nullopt;
}

/// Takes the letters that `pattern` begins with, all the same.
std::string_view takeLetters(std::string_view& pattern) {
  const auto letters = pattern.substr(0, pattern.find_first_not_of(pattern.front()));
  pattern.remove_prefix(letters.size());
  return letters;
}

/// Takes the quotation that `pattern` begins with.
std::optional<std::string> takeQuotation(std::string_view& pattern) {
  pattern.remove_prefix(1);
  std::string text;
  for (auto end = pattern.find('\''); end != pattern.npos; end = pattern.find('\'')) {
    text += pattern.substr(0, end);
    pattern.remove_prefix(end + 1);
    if (!pattern.starts_with('\'')) return text;
    text += '\'';
    pattern.remove_prefix(1);
  }
  return std::nullopt;
}

/// Takes what stands for itself.
std::optional<std::string> takeLiteral(std::string_view& pattern) {
  if (pattern.starts_with("''")) {
    pattern.remove_prefix(2);
    return "'";
  }
  if (pattern.starts_with('\'')) return takeQuotation(pattern);
  const char sign = pattern.front();
  pattern.remove_prefix(1);
  return std::string(1, sign);
}

void append(std::vector<DatePiece>& pieces, std::string literal) {
  if (!pieces.empty() && pieces.back().field == DateField::Literal) {
    pieces.back().literal += literal;
  } else {
    pieces.push_back({DateField::Literal, std::move(literal)});
  }
}

}  // namespace

std::optional<std::vector<DatePiece>> parseDatePattern(std::string_view pattern) {
  std::vector<DatePiece> pieces;
  while (!pattern.empty()) {
    if (isAsciiLetter(pattern.front())) {
      const auto field = fieldOfLetters(takeLetters(pattern));
      if (!field) return std::nullopt;
      pieces.push_back({*field, {}});
    } else {
      auto literal = takeLiteral(pattern);
      if (!literal) return std::nullopt;
      append(pieces, *std::move(literal));
    }
  }
  return pieces;
}

}  // namespace Vastel_Connect

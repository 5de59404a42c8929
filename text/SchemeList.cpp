#include "text/SchemeList.h"

#include <algorithm>

#include "text/Ascii.h"
#include "text/Split.h"

namespace Vastel_Connect {
namespace {

std::string_view withoutBlanksAround(std::string_view text) {
  constexpr std::string_view kBlanks = " \t";
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

}  // namespace

bool listHasScheme(std::string_view list, std::string_view scheme) {
  const auto words = splitText(list, ";");
  return !scheme.empty() &&
         std::any_of(words.begin(), words.end(),
                     [wanted = asciiLowerCase(scheme)](std::string_view word) {
                       return asciiLowerCase(withoutBlanksAround(word)) == wanted;
                     });
}

}  // namespace Vastel_Connect

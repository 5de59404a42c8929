// The reader and the writer of JSON.
#include <algorithm>
#include <cmath>

#include "fuzz/Fuzz.h"
#include "fuzz/Reference.h"
#include "json/JsonText.h"

using namespace Vastel_Connect;
using reference::Json;

namespace {

/// Reals are compared roughly: the reader may be off in the last digits. A whole number is kept
/// exactly; "-0" is one of its spellings.
bool sameNumber(const std::string& written, const std::string& text) {
  if (written.find_first_of(".eE") == written.npos) {
    return written == text || (written == "0" && text == "-0");
  }
  const double expected = std::strtod(text.c_str(), nullptr);
  const double number = std::strtod(written.c_str(), nullptr);
  return number == expected || std::abs(number - expected) <= std::abs(expected) * 1e-13 ||
         std::abs(number - expected) < 1e-300;
}

bool same(const Json& written, const Json& read) {
  if (written.kind != read.kind) return false;
  if (read.kind == Json::Number) return sameNumber(written.text, read.text);
  return written.text == read.text &&
         std::equal(written.elements.begin(), written.elements.end(), read.elements.begin(),
                    read.elements.end(), same) &&
         std::equal(written.members.begin(), written.members.end(), read.members.begin(),
                    read.members.end(), [](const auto& one, const auto& other) {
                      return one.first == other.first && same(one.second, other.second);
                    });
}

/// Whether a number of the document, or its power of ten, is beyond a double's. The grammar leaves
/// such to readers: ours reads 0e400 as none.
bool hasHugeNumber(const Json& json) {
  if (json.kind == Json::Number) {
    const auto exponent = json.text.find_first_of("eE");
    const long power =
        exponent != std::string::npos ? std::strtol(&json.text[exponent + 1], nullptr, 10) : 0;
    return std::labs(power) > 290 || json.text.size() > 290;
  }
  return std::any_of(json.elements.begin(), json.elements.end(), hasHugeNumber) ||
         std::any_of(json.members.begin(), json.members.end(),
                     [](const auto& member) { return hasHugeNumber(member.second); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto text = fuzz::textOf(data, size);
  const auto document = parseJsonText(text);
  const auto expected = reference::parseJson(text);
  fuzz::expect(document.has_value() == expected.has_value(), "is it a document");
  if (!document) return 0;
  const bool isObject = document->is_object();
  auto written = writeJsonText(isObject ? document->get_object() : JSON{{"a", *document}});
  // The writer takes objects alone: an array is taken out again.
  if (written && !isObject) written = written->substr(5, written->size() - 6);
  const auto again = written ? reference::parseJson(*written) : std::nullopt;
  fuzz::expect(written.has_value() == again.has_value(), "what is written is JSON");
  if (hasHugeNumber(*expected)) return 0;
  fuzz::expect(again && same(*again, *expected), "the values of what is read and written");
  return 0;
}

// The reader and the writer of JSON.
#include <cmath>

#include "fuzz/Fuzz.h"
#include "fuzz/Reference.h"
#include "json/JsonText.h"

using namespace Vastel_Connect;
using reference::Json;

namespace {

/// Reals are compared roughly: the reader may be off in the last digits.
bool sameNumber(const JsonValue& value, const std::string& text) {
  if (!value.is_double()) {
    // A whole number, kept exactly. "-0" is one of its spellings.
    const std::string written = boost::json::serialize(value);
    return written == text || (written == "0" && text == "-0");
  }
  const double expected = std::strtod(text.c_str(), nullptr);
  const double number = value.get_double();
  return number == expected || std::abs(number - expected) <= std::abs(expected) * 1e-13 ||
         std::abs(number - expected) < 1e-300;
}

bool same(const JsonValue& value, const Json& expected);

bool sameMembers(const JSON& object, const Json& expected) {
  if (object.size() != expected.members.size()) return false;
  for (const auto& [key, member] : object) {
    const Json* other = expected.member(key);
    if (other == nullptr || !same(member, *other)) return false;
  }
  return true;
}

bool sameElements(const JsonArray& array, const Json& expected) {
  if (array.size() != expected.elements.size()) return false;
  for (std::size_t i = 0; i < array.size(); ++i) {
    if (!same(array[i], expected.elements[i])) return false;
  }
  return true;
}

bool same(const JsonValue& value, const Json& expected) {
  switch (expected.kind) {
    case Json::Null:
      return value.is_null();
    case Json::True:
    case Json::False:
      return value.is_bool() && value.get_bool() == (expected.kind == Json::True);
    case Json::Number:
      return value.is_number() && sameNumber(value, expected.text);
    case Json::String:
      return value.is_string() && value.get_string() == expected.text;
    case Json::Array:
      return value.is_array() && sameElements(value.get_array(), expected);
    case Json::Object:
      return value.is_object() && sameMembers(value.get_object(), expected);
  }
  return false;
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
  for (const Json& each : json.elements) {
    if (hasHugeNumber(each)) return true;
  }
  for (const auto& [key, member] : json.members) {
    if (hasHugeNumber(member)) return true;
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto text = fuzz::textOf(data, size);
  const auto document = parseJsonText(text);
  const auto expected = reference::parseJson(text);
  fuzz::expect(document.has_value() == expected.has_value(), "is it a document");
  if (!document) return 0;
  const JSON* object = document->if_object();
  const auto written = object != nullptr ? writeJsonText(*object) : std::nullopt;
  const auto again = written ? reference::parseJson(*written) : std::nullopt;
  fuzz::expect(written.has_value() == again.has_value(), "what is written is JSON");
  if (hasHugeNumber(*expected)) return 0;
  fuzz::expect(same(*document, *expected), "its values");
  fuzz::expect(object == nullptr || (again && same(*document, *again)), "what is written");
  return 0;
}

#include "json/JsonText.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "text/Ascii.h"
#include "text/Utf8.h"

namespace Vastel_Connect {
namespace {

bool areWritable(const JSON& members);

bool isWritable(const JsonValue& value) {
  if (const auto* number = value.if_double()) return std::isfinite(*number);
  if (const auto* text = value.if_string()) return isUtf8(*text);
  if (const auto* array = value.if_array()) {
    return std::all_of(array->begin(), array->end(), isWritable);
  }
  const JSON* object = value.if_object();
  return object == nullptr || areWritable(*object);
}

bool areWritable(const JSON& members) {
  return std::all_of(members.begin(), members.end(), [](const auto& member) {
    return isUtf8(member.key()) && isWritable(member.value());
  });
}

/// `text` with 999999999 for each longer exponent. Its numbers stay the same: either makes zero or
/// infinity of whatever stands before it, if that is less than a billion digits.
std::string withShortExponents(std::string_view text) {
  std::string result;
  bool inString = false;
  auto at = text.begin();
  while (at != text.end()) {
    const char c = *at++;
    result += c;
    if (c == '"') inString = !inString;
    if (inString && c == '\\' && at != text.end()) result += *at++;
    if (inString || (c != 'e' && c != 'E')) continue;
    if (at != text.end() && (*at == '+' || *at == '-')) result += *at++;
    const auto end = std::find_if_not(at, text.end(), isAsciiDigit);
    const auto first = std::find_if(at, end, [](char digit) { return digit != '0'; });
    result += end - first > 9 ? "999999999" : std::string_view(at, end);
    at = end;
  }
  return result;
}

}  // namespace

std::optional<JsonValue> parseJsonText(std::string_view text, boost::json::storage_ptr storage) {
  boost::json::parse_options options;
  options.max_depth = kJsonDepthLimit;
  boost::system::error_code error;
  std::optional document = boost::json::parse(text, error, storage, options);
  if (error == boost::json::error::exponent_overflow) {
    // How long an exponent the library reads depends on its version.
    document.emplace(
        boost::json::parse(withShortExponents(text), error, std::move(storage), options));
  }
  if (error || !document->is_structured()) return std::nullopt;
  return document;
}

std::optional<std::string> writeJsonText(const JSON& json) {
  if (!areWritable(json)) return std::nullopt;
  return boost::json::serialize(json);
}

}  // namespace Vastel_Connect

#include "json/JsonText.h"

#include <algorithm>
#include <cmath>
#include <utility>

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

}  // namespace

std::optional<JsonValue> parseJsonText(std::string_view text, boost::json::storage_ptr storage) {
  boost::json::parse_options options;
  options.max_depth = kJsonDepthLimit;
  boost::system::error_code error;
  JsonValue document = boost::json::parse(text, error, std::move(storage), options);
  if (error || !document.is_structured()) return std::nullopt;
  return document;
}

std::optional<std::string> writeJsonText(const JSON& json) {
  if (!areWritable(json)) return std::nullopt;
  return boost::json::serialize(json);
}

}  // namespace Vastel_Connect

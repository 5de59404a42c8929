#include "json/JsonText.h"

#include <utility>

namespace Vastel_Connect {

std::optional<JsonValue> parseJsonText(std::string_view text, boost::json::storage_ptr storage) {
  boost::json::parse_options options;
  options.max_depth = kJsonDepthLimit;
  boost::system::error_code error;
  JsonValue document = boost::json::parse(text, error, std::move(storage), options);
  if (error || !document.is_structured()) return std::nullopt;
  return document;
}

std::string writeJsonText(const JSON& json) {
  return boost::json::serialize(json);
}

}  // namespace Vastel_Connect

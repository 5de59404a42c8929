#include "json/KeyPath.h"

#include <utility>

#include "platform/Platform.h"
#include "text/Split.h"

namespace Vastel_Connect {
namespace {

void printUnusableKeyPath(std::string_view keyPath) {
  platform::printLine("[Gloss] Unable to use keyPath '" + std::string(keyPath) +
                      "' as key on type: String");
}

}  // namespace

const JsonValue* valueForKeyPath(const JSON& json, std::string_view keyPath,
                                 std::string_view delimiter) {
  return valueForKeys(json, splitText(keyPath, delimiter), keyPath);
}

void setValueForKeyPath(JSON& json, std::string_view keyPath, JsonValue value,
                        std::string_view delimiter) {
  setValueForKeys(json, splitText(keyPath, delimiter), keyPath, std::move(value));
}

const JsonValue* valueForKeys(const JSON& json, const std::vector<std::string_view>& keys,
                              std::string_view keyPath) {
  if (keys.empty()) {
    printUnusableKeyPath(keyPath);
    return nullptr;
  }
  const JSON* dictionary = &json;
  for (std::size_t depth = 0; depth + 1 < keys.size(); ++depth) {
    const JsonValue* inner = dictionary->if_contains(keys[depth]);
    dictionary = inner != nullptr ? inner->if_object() : nullptr;
    if (dictionary == nullptr) return nullptr;
  }
  return dictionary->if_contains(keys.back());
}

void setValueForKeys(JSON& json, const std::vector<std::string_view>& keys,
                     std::string_view keyPath, JsonValue value) {
  if (keys.empty()) {
    printUnusableKeyPath(keyPath);
    return;
  }
  JSON* dictionary = &json;
  for (std::size_t depth = 0; depth + 1 < keys.size(); ++depth) {
    JsonValue& inner = (*dictionary)[keys[depth]];
    dictionary = inner.is_object() ? &inner.get_object() : &inner.emplace_object();
  }
  (*dictionary)[keys.back()] = std::move(value);
}

}  // namespace Vastel_Connect

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "json/Json.h"

namespace Vastel_Connect {

/// Separates the keys of a key path wherever no other delimiter is given. The program never changes
/// it; whoever does so must be alone in using the mapping layer at that time.
inline std::string keyPathDelimiter = ".";

// A key path is split as splitText does: "" has one empty key, and so has the space between two
// delimiters. No key can hold the delimiter; an empty one splits nothing.

/// The value that `keyPath` names in `json`, or null when a key is missing or a value before the
/// last is not a dictionary. A JSON null is a value. Arrays are never indexed. The value is
/// `json`'s.
[[nodiscard]] const JsonValue* valueForKeyPath(const JSON& json, std::string_view keyPath,
                                               std::string_view delimiter = keyPathDelimiter);

/// Stores `value` under `keyPath`. Dictionaries on the way are made where they are missing, and
/// replace what is not a dictionary.
void setValueForKeyPath(JSON& json, std::string_view keyPath, JsonValue value,
                        std::string_view delimiter = keyPathDelimiter);

/// The two operations above for a path that is split already; `keyPath` is its text. Without any
/// key they print the layer's diagnostic line, and find and store nothing.
[[nodiscard]] const JsonValue* valueForKeys(const JSON& json,
                                            const std::vector<std::string_view>& keys,
                                            std::string_view keyPath);
void setValueForKeys(JSON& json, const std::vector<std::string_view>& keys,
                     std::string_view keyPath, JsonValue value);

}  // namespace Vastel_Connect

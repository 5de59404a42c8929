#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "json/Json.h"

namespace Vastel_Connect {

/// How many objects and arrays may stand inside each other, the outermost counted. The figure is
/// that of Foundation's reader up to macOS 13.
inline constexpr std::size_t kJsonDepthLimit = 512;

/// Parses a whole JSON document (RFC 8259, UTF-8) whose top level is an object or an array. Absent
/// for anything else, a bare string or number and a too deeply nested document included. Of a
/// repeated key the last value counts. Numbers may be of any size: one beyond a double's range is
/// infinite or zero. The result lives in `storage`, which must outlive it.
[[nodiscard]] std::optional<JsonValue> parseJsonText(std::string_view text,
                                                     boost::json::storage_ptr storage = {});

/// Writes `json` as one compact line, its members in order. Control characters are escaped, all
/// other text stays as it is. Absent when `json` holds what no JSON text can: a number that is not
/// finite (as 1e999 is read), or a text that is not UTF-8.
[[nodiscard]] std::optional<std::string> writeJsonText(const JSON& json);

}  // namespace Vastel_Connect

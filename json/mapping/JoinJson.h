#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "json/Json.h"
#include "json/KeyPath.h"

namespace Vastel_Connect::Encoder {

/// One dictionary of all entries of `dictionaries`, in order; absent ones are skipped. The key of
/// each entry is taken as a key path: its value is stored in a dictionary for each key before the
/// last. A later value replaces an earlier one under the same path, and so does a dictionary on the
/// way what is not one.
[[nodiscard]] JSON joinJson(std::vector<std::optional<JSON>> dictionaries,
                            std::string_view delimiter = keyPathDelimiter);

}  // namespace Vastel_Connect::Encoder

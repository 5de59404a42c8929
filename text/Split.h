#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Vastel_Connect {

/// The parts of `text` between separators, at least one: "" has one empty part, and so has the
/// space between two adjacent separators. An empty separator splits nothing. Borrowed from `text`.
[[nodiscard]] std::vector<std::string_view> splitText(std::string_view text,
                                                      std::string_view separator);

/// The parts that are not empty, as texts of their own.
[[nodiscard]] std::vector<std::string> splitWords(std::string_view text,
                                                  std::string_view separator);

}  // namespace Vastel_Connect

#pragma once

#include <optional>
#include <utility>

namespace Vastel_Connect {

/// A `Result` of what `transform` gives for each element of `array`, in order. Absent as a whole
/// when it gives nothing for any one of them.
template <typename Result, typename From, typename Transform>
[[nodiscard]] std::optional<Result> transformArray(const From& array, Transform transform) {
  Result result;
  result.reserve(array.size());
  for (const auto& element : array) {
    auto transformed = transform(element);
    if (!transformed) return std::nullopt;
    result.push_back(*std::move(transformed));
  }
  return result;
}

}  // namespace Vastel_Connect

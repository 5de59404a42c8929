#pragma once

#include <utility>

namespace Vastel_Connect {

/// A `Result`, a dictionary, of the entries that `transform` makes from those of `dictionary`:
/// called with a key and its value, it gives an optional pair of the new key and the new value. An
/// entry for which it gives nothing is dropped. Of a repeated new key the last entry counts, in the
/// order in which `dictionary` is walked: a JSON's is that of its insertions, a map's that of its
/// keys.
template <typename Result, typename From, typename Transform>
[[nodiscard]] Result transformDictionary(const From& dictionary, Transform transform) {
  Result result;
  for (const auto& [key, value] : dictionary) {
    auto entry = transform(key, value);
    if (!entry) continue;
    auto& [newKey, newValue] = *entry;
    result.insert_or_assign(std::move(newKey), std::move(newValue));
  }
  return result;
}

}  // namespace Vastel_Connect

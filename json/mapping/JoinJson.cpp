#include "json/mapping/JoinJson.h"

#include <utility>

namespace Vastel_Connect::Encoder {

JSON joinJson(std::vector<std::optional<JSON>> dictionaries, std::string_view delimiter) {
  JSON joined;
  for (auto& dictionary : dictionaries) {
    if (!dictionary) continue;
    for (auto& [keyPath, value] : *dictionary) {
      setValueForKeyPath(joined, keyPath, std::move(value), delimiter);
    }
  }
  return joined;
}

}  // namespace Vastel_Connect::Encoder

#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace Vastel_Connect {

/// A UUID, its 16 bytes in the order in which they are written.
struct Uuid {
  std::array<std::uint8_t, 16> bytes{};

  /// 32 capital hex digits in groups of 8, 4, 4, 4 and 12, joined by "-".
  [[nodiscard]] std::string uuidString() const;

  bool operator==(const Uuid&) const = default;
};

}  // namespace Vastel_Connect

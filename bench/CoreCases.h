#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace Vastel_Connect::bench {

/// One contestant at one step of the way from a link's text to its page, without a host.
struct CoreCase {
  std::string step;
  std::string contestant;
  /// The size of what the step reads, in bytes; the road's is that of the record's JSON text.
  std::size_t size;
  std::function<void()> run;
};

/// A call of the log is too short to be measured alone.
inline constexpr int kLogCalls = 1000;

/// All steps for JSON records of about `size` bytes.
[[nodiscard]] std::vector<CoreCase> coreCases(std::size_t size);

/// The steps whose cost does not depend on a size.
[[nodiscard]] std::vector<CoreCase> logCases();

}  // namespace Vastel_Connect::bench

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Vastel_Connect {

/// The bytes of a file of tests/data. Fails the test when there is no such file.
[[nodiscard]] std::string readData(std::string_view name);

/// The rows of a file of tests/data, split at tabs; lines that begin with "#" are left out. Fails
/// the test when there is none.
[[nodiscard]] std::vector<std::vector<std::string>> readTable(std::string_view name);

/// The text that a JSON string of a table stands for.
[[nodiscard]] std::string jsonString(std::string_view cell);

/// The bytes that hex digits stand for.
[[nodiscard]] std::string hexBytes(std::string_view cell);

}  // namespace Vastel_Connect

#pragma once

#include <optional>
#include <string>

namespace Vastel_Connect {

/// The absolute path of an executable that is named by a path or is found in PATH; absent when
/// there is none. A folder of PATH that is relative to the current one is passed over.
[[nodiscard]] std::optional<std::string> findProgram(const std::string& name);

}  // namespace Vastel_Connect

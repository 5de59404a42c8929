#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Vastel_Connect {

/// The value of an environment variable; `fallback` where it is not set, or empty.
[[nodiscard]] std::string environmentText(const char* name, std::string_view fallback = "");

/// The folders of settings, and those of applications' data, as the freedesktop base directory
/// document 0.8 has them: the user's before the system's. They are not looked at, and may be
/// relative.
[[nodiscard]] std::vector<std::string> configFolders();
[[nodiscard]] std::vector<std::string> dataFolders();

}  // namespace Vastel_Connect

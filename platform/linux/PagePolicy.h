#pragma once

#include <string>
#include <string_view>

namespace Vastel_Connect {

/// The administrator's file. Nothing else names another one.
inline constexpr const char* kPagePolicy = "/etc/vastel-connect.conf";

/// Whether the key file at `path` permits pages of `scheme`, by the list Schemes in its group
/// [Pages]; standard error says why it does not. Without such a file all are permitted. One that is
/// there and cannot be understood permits none.
[[nodiscard]] bool permitsPage(const std::string& path, std::string_view scheme);

}  // namespace Vastel_Connect

#pragma once

#include <sys/types.h>

#include <string>

namespace Vastel_Connect {

/// Asks the user's service manager, where there is one, to give a child a scope of its own, so that
/// it neither counts as a part of this program nor ends with it. Does not wait for the answer.
void startScope(pid_t child, const std::string& application);

/// The scope's name: "app-vastel\x2dconnect-<application>-<child>.scope", the application's name
/// escaped as unit names are.
[[nodiscard]] std::string scopeName(pid_t child, const std::string& application);

}  // namespace Vastel_Connect

#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/linux/ActivationToken.h"

namespace Vastel_Connect {

/// Starts a program that lives on by itself: in a process group of its own, and without our
/// terminal, in this process' folder, with /dev/null for standard streams, no other descriptor of
/// ours, no signal blocked or ignored, and `token` in its environment, where a lone startup id
/// counts as the activation token on Wayland. Absent when it could not be started. The kernel reaps
/// it.
[[nodiscard]] std::optional<pid_t> spawnProgram(const std::string& program,
                                                const std::vector<std::string>& arguments,
                                                const ActivationToken& token);

/// Makes the user's home this process' folder, as desktops do for what they start; "/" where it
/// cannot be entered.
void enterHome();

/// A crash of this process leaves no core from now on, which would hold what links carry. What
/// spawnProgram starts has the limit that was found.
void leaveNoCore();

/// Lets the kernel reap children, so that none becomes a zombie and none wakes us.
void letKernelReapChildren();

}  // namespace Vastel_Connect

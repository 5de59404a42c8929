#pragma once

namespace Vastel_Connect {

/// Runs the application from its launch to its end, or hands the links that it was started with to
/// the one that is running. The result is the process's exit status.
int applicationMain(int argc, char** argv);

}  // namespace Vastel_Connect

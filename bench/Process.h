#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Vastel_Connect::bench {

/// CLOCK_MONOTONIC in nanoseconds.
[[nodiscard]] std::int64_t now();

/// Ends the measurement with a line on standard error.
[[noreturn]] void fail(const std::string& what);

/// Starts a program with the environment of this process. Its standard output goes to /dev/null.
pid_t start(const std::vector<std::string>& arguments);
/// The same with descriptors for its standard input and output.
pid_t start(const std::vector<std::string>& arguments, int input, int output);

/// Sends SIGTERM and waits for the end.
void stop(pid_t process);

/// A program of peers/OpenEachLine.h: it opens the page of each line that it reads, and tells when
/// it began to.
class PageOpener {
 public:
  explicit PageOpener(const std::vector<std::string>& arguments);
  ~PageOpener();
  PageOpener(const PageOpener&) = delete;
  PageOpener& operator=(const PageOpener&) = delete;

  /// Opens a page. The result is the time just before.
  [[nodiscard]] std::int64_t open(const std::string& page) const;

 private:
  int pages_ = -1;
  int times_ = -1;
  pid_t process_ = -1;
};

}  // namespace Vastel_Connect::bench

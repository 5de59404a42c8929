#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace Vastel_Connect {

/// Makes `zone` the process's default time zone for as long as it lives. Who reads the time has to
/// notice.
class InZone {
 public:
  explicit InZone(const std::string& zone) {
    if (const char* before = std::getenv("TZ")) before_ = before;
    ::setenv("TZ", zone.c_str(), 1);
  }
  ~InZone() {
    if (before_) {
      ::setenv("TZ", before_->c_str(), 1);
    } else {
      ::unsetenv("TZ");
    }
  }
  InZone(const InZone&) = delete;
  InZone& operator=(const InZone&) = delete;

 private:
  std::optional<std::string> before_;
};

}  // namespace Vastel_Connect

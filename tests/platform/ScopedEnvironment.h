#pragma once

#include <cstdlib>
#include <map>
#include <optional>
#include <string>

namespace Vastel_Connect {

/// Environment variables that have other values, or none, as long as this object is there.
class ScopedEnvironment {
 public:
  ScopedEnvironment() = default;
  ScopedEnvironment(const std::string& name, const std::string& value) { set(name, value); }
  ~ScopedEnvironment() {
    for (const auto& [name, value] : before_) assign(name, value);
  }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

  void set(const std::string& name, const std::optional<std::string>& value) {
    const char* before = std::getenv(name.c_str());
    before_.emplace(name, before != nullptr ? std::optional<std::string>(before) : std::nullopt);
    assign(name, value);
  }

 private:
  static void assign(const std::string& name, const std::optional<std::string>& value) {
    if (value) {
      ::setenv(name.c_str(), value->c_str(), 1);
    } else {
      ::unsetenv(name.c_str());
    }
  }

  std::map<std::string, std::optional<std::string>> before_;
};

}  // namespace Vastel_Connect

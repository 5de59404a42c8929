#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>

namespace Vastel_Connect {

/// A folder that is there as long as this object.
class PrivateFolder {
 public:
  PrivateFolder() {
    std::string path = testing::TempDir() + "connect-XXXXXX";
    EXPECT_NE(::mkdtemp(path.data()), nullptr) << path;
    path_ = path;
  }
  ~PrivateFolder() { std::filesystem::remove_all(path_); }
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;

  /// The absolute path of `name` in the folder.
  [[nodiscard]] std::string path(std::string_view name) const { return path_ / name; }

  /// Writes a file, in folders that are made where need be, and gives its absolute path.
  std::string write(std::string_view name, std::string_view content) const {
    const std::filesystem::path file = path_ / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << content;
    return file;
  }

  [[nodiscard]] std::string read(std::string_view name) const {
    std::ostringstream content;
    content << std::ifstream(path_ / name, std::ios::binary).rdbuf();
    return content.str();
  }

 private:
  std::filesystem::path path_;
};

/// Environment variables that have other values, or none, as long as this object is there.
class ScopedEnvironment {
 public:
  ScopedEnvironment() = default;
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

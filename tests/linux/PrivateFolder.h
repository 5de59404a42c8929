#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

#include "tests/platform/ScopedEnvironment.h"

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

}  // namespace Vastel_Connect

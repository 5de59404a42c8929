#include "tests/platform/Data.h"

#include <gtest/gtest.h>

#include <boost/json.hpp>
#include <fstream>
#include <sstream>

namespace Vastel_Connect {

std::string readData(std::string_view name) {
  const std::string path = std::string(CONNECT_TEST_DATA "/").append(name);
  const std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << path;
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

std::vector<std::vector<std::string>> readTable(std::string_view name) {
  std::vector<std::vector<std::string>> rows;
  std::istringstream lines(readData(name));
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("#")) continue;
    auto& row = rows.emplace_back();
    std::istringstream cells(line + "\t");
    for (std::string cell; std::getline(cells, cell, '\t');) row.push_back(cell);
  }
  EXPECT_FALSE(rows.empty()) << name;
  return rows;
}

std::string jsonString(std::string_view cell) {
  const auto value = boost::json::parse(cell);
  return std::string(value.as_string());
}

std::string hexBytes(std::string_view cell) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < cell.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(std::string(cell.substr(i, 2)), nullptr, 16));
  }
  return bytes;
}

}  // namespace Vastel_Connect

// Tries every file of the folder that is named as the argument once: a fuzz target as a plain test.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

#include "fuzz/Fuzz.h"

int main(int /*argc*/, char** argv) {
  int tried = 0;
  for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
    std::ifstream file(entry.path(), std::ios::binary);
    std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    // So that a sanitizer sees each read beyond its end.
    bytes.shrink_to_fit();
    // Named beforehand, since a failure ends the process.
    std::cout << entry.path().filename().string() << std::endl;
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    ++tried;
  }
  return tried > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

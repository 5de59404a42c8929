// Tries every file of the folders that are named as arguments once: a fuzz target as a plain test.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "fuzz/Fuzz.h"

int main(int argc, char** argv) {
  int tried = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      std::ifstream file(entry.path(), std::ios::binary);
      const std::string bytes{std::istreambuf_iterator<char>(file), {}};
      // Named beforehand, since a failure ends the process.
      std::cout << entry.path().filename().string() << std::endl;
      LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
      ++tried;
    }
  }
  std::cout << tried << " inputs tried\n";
  return tried > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

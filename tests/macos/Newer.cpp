// Does not compile where the oldest macOS is older than 13.3.
#include <charconv>

char* write(char* begin, char* end, double number) {
  return std::to_chars(begin, end, number).ptr;
}

// Usage: bench_handler SOCKET URL, or bench_handler SOCKET /PROGRAM [ARGUMENT...]
// Tells when it began, and becomes the program.
#include <unistd.h>

#include "bench/peers/Stamp.h"

int main(int argc, char** argv) {
  const int64_t began = now();
  if (argc < 3) return 1;
  stamp(argv[1], began);
  return argv[2][0] == '/' ? execv(argv[2], argv + 2) : 0;
}

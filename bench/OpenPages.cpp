// Usage: bench_open_pages SOCKET. Opens pages as the program does.
#include "bench/peers/OpenEachLine.h"
#include "platform/Platform.h"
#include "platform/linux/Spawn.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  Vastel_Connect::letKernelReapChildren();
  return openEachLine(argv[1], [](const char* page) { Vastel_Connect::platform::openUrl(page); });
}

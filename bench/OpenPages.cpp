// Usage: bench_open_pages SOCKET [HANDLER]. Each line of standard input is a page. Opens it as the
// program does; with a handler, starts that and does nothing else. Tells when it began to.
#include <spawn.h>
#include <unistd.h>

#include <iostream>
#include <string>

#include "bench/peers/Stamp.h"
#include "platform/Platform.h"
#include "platform/linux/Spawn.h"

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  Vastel_Connect::enterHome();
  Vastel_Connect::letKernelReapChildren();
  std::string page;
  while (std::getline(std::cin, page)) {
    const int64_t began = now();
    if (argc == 2) {
      Vastel_Connect::platform::openUrl(page);
    } else {
      pid_t child = 0;
      char* const handler[] = {argv[2], argv[1], page.data(), nullptr};
      posix_spawn(&child, argv[2], nullptr, nullptr, handler, environ);
    }
    stamp(argv[1], began);
  }
  return 0;
}

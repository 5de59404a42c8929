// Usage: bench_open_pages_spawn SOCKET HANDLER. Starts the handler for each page, and nothing else.
#include <signal.h>
#include <spawn.h>

#include "bench/peers/OpenEachLine.h"

extern char** environ;

static char* handler[4];

static void openPage(const char* page) {
  pid_t child = 0;
  handler[2] = (char*)page;
  posix_spawn(&child, handler[0], NULL, NULL, handler, environ);
}

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  handler[0] = argv[2];
  handler[1] = argv[1];
  signal(SIGCHLD, SIG_IGN);
  return openEachLine(argv[1], openPage);
}

#ifndef BENCH_PEERS_OPEN_EACH_LINE_H
#define BENCH_PEERS_OPEN_EACH_LINE_H

#include <stdio.h>

#include "bench/peers/Stamp.h"

/* What the programs that open pages have in common: each line of standard input is a page. Tells
 * the time just before it is opened. */
static inline int openEachLine(const char* socketPath, void (*openPage)(const char* page)) {
  char page[4096];
  while (fgets(page, sizeof page, stdin) != NULL) {
    page[strcspn(page, "\n")] = '\0';
    const int64_t began = now();
    openPage(page);
    stamp(socketPath, began);
  }
  return 0;
}

#endif

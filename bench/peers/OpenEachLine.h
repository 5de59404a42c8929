/* What the programs that open pages have in common: each line of standard input is a page. The time
 * just before it is opened (CLOCK_MONOTONIC, nanoseconds) is written to standard output. */
#ifndef BENCH_PEERS_OPEN_EACH_LINE_H
#define BENCH_PEERS_OPEN_EACH_LINE_H

#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

static inline int openEachLine(void (*openPage)(const char* page)) {
  char page[4096];
  while (fgets(page, sizeof page, stdin) != NULL) {
    page[strcspn(page, "\n")] = '\0';
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    const int64_t began = INT64_C(1000000000) * time.tv_sec + time.tv_nsec;
    openPage(page);
    if (write(STDOUT_FILENO, &began, sizeof began) < 0) return 1;
  }
  return 0;
}

#endif

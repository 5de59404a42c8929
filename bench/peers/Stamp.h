#ifndef BENCH_PEERS_STAMP_H
#define BENCH_PEERS_STAMP_H

#include <stdint.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <time.h>

/* CLOCK_MONOTONIC in nanoseconds. */
static inline int64_t now(void) {
  struct timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return INT64_C(1000000000) * time.tv_sec + time.tv_nsec;
}

/* Tells a time to the datagram socket of this path. */
static inline void stamp(const char* path, int64_t nanoseconds) {
  union {
    struct sockaddr_un local;
    struct sockaddr any;
  } address = {.local = {.sun_family = AF_UNIX}};
  strncpy(address.local.sun_path, path, sizeof address.local.sun_path - 1);
  sendto(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0), &nanoseconds, sizeof nanoseconds, 0,
         &address.any, sizeof address);
}

#endif

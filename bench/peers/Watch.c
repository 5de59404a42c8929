// Usage: bench_watch SOCKET NAME... Tells when a name on the session bus gets an owner, and when it
// loses it; once before, when it looks.
#include <stdio.h>
#include <systemd/sd-bus.h>

#include "bench/peers/Stamp.h"

static int onChange(sd_bus_message* message, void* socketPath, sd_bus_error* error) {
  (void)message, (void)error;
  stamp(socketPath, now());
  return 0;
}

int main(int argc, char** argv) {
  sd_bus* bus = NULL;
  char rule[256];
  if (argc < 3 || sd_bus_open_user(&bus) < 0) return 1;
  for (int i = 2; i < argc; ++i) {
    snprintf(rule, sizeof rule, "type='signal',member='NameOwnerChanged',arg0='%s'", argv[i]);
    if (sd_bus_add_match(bus, NULL, rule, onChange, argv[1]) < 0) return 1;
  }
  stamp(argv[1], now());
  int result = 0;
  while (result >= 0) {
    result = sd_bus_process(bus, NULL);
    if (result == 0) result = sd_bus_wait(bus, UINT64_MAX);
  }
  return 1;
}

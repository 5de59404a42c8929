// Usage: bench_bare_call LINK HANDLER [ARGUMENT...]. Makes the call of com.vastel.Bare that hands a
// link over, waits for the answer, and starts the page's handler.
#include <spawn.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>

extern char** environ;

int main(int argc, char** argv) {
  sd_bus* bus = NULL;
  pid_t handler = 0;
  if (argc < 3 || sd_bus_open_user(&bus) < 0 ||
      sd_bus_call_method(bus, "com.vastel.Bare", "/com/vastel/Bare", "org.freedesktop.Application",
                         "Open", NULL, NULL, "asa{sv}", 1, argv[1], 0) < 0 ||
      posix_spawn(&handler, argv[2], NULL, NULL, argv + 2, environ) != 0) {
    return 1;
  }
  waitpid(handler, NULL, 0);
  sd_bus_flush_close_unref(bus);
  return 0;
}

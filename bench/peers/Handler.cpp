// Usage: bench_handler SOCKET URL, or bench_handler SOCKET PROGRAM ARGUMENT...
// Sends the time at which it began (CLOCK_MONOTONIC, nanoseconds) to a datagram socket, and becomes
// the program.
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <ctime>

int main(int argc, char** argv) {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  if (argc < 2) return 1;
  const std::int64_t nanoseconds = std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
  const int channel = ::socket(AF_UNIX, SOCK_DGRAM, 0);
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
  std::strncpy(address.sun_path, argv[1], sizeof address.sun_path - 1);
  ::sendto(channel, &nanoseconds, sizeof nanoseconds, 0, reinterpret_cast<sockaddr*>(&address),
           sizeof address);
  if (argc > 3) ::execv(argv[2], argv + 2);
  return argc > 3;
}

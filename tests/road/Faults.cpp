// Loaded before the program by the tests: a machine whose memory fails once, whose clock is set, or
// whose bus is slow.
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
}

namespace {

long failing = 0;
long allocations = 0;
const char* countFile = nullptr;
const char* clockFile = nullptr;
bool isBusSlow = false;

/// Takes a variable out of the environment, so that no child has it.
const char* take(const char* variable) {
  const char* value = std::getenv(variable);
  ::unsetenv(variable);
  return value;
}

[[gnu::constructor]] void begin() {
  take("LD_PRELOAD");
  const char* number = take("FAULTS_ALLOCATION");
  failing = number != nullptr ? std::atol(number) : 0;
  countFile = take("FAULTS_COUNT");
  clockFile = take("FAULTS_CLOCK");
  isBusSlow = take("FAULTS_SLOW_BUS") != nullptr;
  allocations = 0;
}

[[gnu::destructor]] void end() {
  if (countFile == nullptr) return;
  std::FILE* file = std::fopen(countFile, "w");
  if (file == nullptr) return;
  std::fprintf(file, "%ld", allocations);
  std::fclose(file);
}

bool fails() {
  if (++allocations != failing) return false;
  errno = ENOMEM;
  return true;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) {
  return fails() ? nullptr : __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
  return fails() ? nullptr : __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) {
  return fails() ? nullptr : __libc_realloc(memory, size);
}

/// Finds no room every other time.
ssize_t sendmsg(int socket, const msghdr* message, int flags) {
  static bool isFull = false;
  isFull = isBusSlow && !isFull;
  if (!isFull) return ::syscall(SYS_sendmsg, socket, message, flags);
  errno = EAGAIN;
  return -1;
}

/// The seconds that stand in the file, which is the time everywhere.
std::time_t time(std::time_t* result) {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  if (clockFile != nullptr) {
    if (std::FILE* file = std::fopen(clockFile, "r")) {
      if (std::fscanf(file, "%ld", &now.tv_sec) != 1) now.tv_sec = 0;
      std::fclose(file);
    }
  }
  if (result != nullptr) *result = now.tv_sec;
  return now.tv_sec;
}
}

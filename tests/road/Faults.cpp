// Loaded before the program by the tests: a machine whose memory fails once, whose clock is set,
// whose bus is slow, or whose bus library has a function that fails.
#include <dlfcn.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string_view>

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
std::string_view failingFunction;

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
  if (const char* name = take("FAULTS_FUNCTION")) failingFunction = name;
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

/// The library's function, of the type of the one that stands before it.
template <typename Function>
Function* next(Function* /*before*/, const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
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

int sd_event_loop(sd_event* loop) {
  if (failingFunction == __func__) return -EIO;
  return next(sd_event_loop, __func__)(loop);
}

int sd_event_add_signal(sd_event* loop, sd_event_source** source, int number,
                        sd_event_signal_handler_t handler, void* userdata) {
  if (failingFunction == __func__) return -EMFILE;
  return next(sd_event_add_signal, __func__)(loop, source, number, handler, userdata);
}

int sd_bus_request_name(sd_bus* bus, const char* name, std::uint64_t flags) {
  if (failingFunction == __func__) return -ETIMEDOUT;
  return next(sd_bus_request_name, __func__)(bus, name, flags);
}

int sd_bus_call_async(sd_bus* bus, sd_bus_slot** slot, sd_bus_message* call,
                      sd_bus_message_handler_t handler, void* userdata,
                      std::uint64_t microseconds) {
  const char* destination = sd_bus_message_get_destination(call);
  const bool isOurs =
      destination != nullptr && destination == std::string_view("com.vastel.Connect");
  if (isOurs && failingFunction == __func__) return -ENOMEM;
  return next(sd_bus_call_async, __func__)(bus, slot, call, handler, userdata, microseconds);
}

/// The program sends no answer that has a content.
int sd_bus_reply_method_return(sd_bus_message* call, const char* /*types*/, ...) {
  if (failingFunction == __func__) return -ENOMEM;
  return next(sd_bus_reply_method_return, __func__)(call, nullptr);
}

/// Any limit of time is over at once.
int sd_bus_wait(sd_bus* bus, std::uint64_t microseconds) {
  if (failingFunction == __func__ && microseconds != UINT64_MAX) return 0;
  return next(sd_bus_wait, __func__)(bus, microseconds);
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

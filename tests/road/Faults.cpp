// Loaded before the program by the tests: a machine whose memory fails once, whose clock is set,
// whose bus is slow, or whose bus library has a function that fails.
#include <dlfcn.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <fstream>
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
  const long count = allocations;
  if (countFile != nullptr) std::ofstream(countFile) << count;
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

int sd_bus_add_object_vtable(sd_bus* bus, sd_bus_slot** slot, const char* path,
                             const char* interface, const sd_bus_vtable* table, void* userdata) {
  if (failingFunction == __func__) return -ENOMEM;
  return next(sd_bus_add_object_vtable, __func__)(bus, slot, path, interface, table, userdata);
}

int sd_bus_call_async(sd_bus* bus, sd_bus_slot** slot, sd_bus_message* call,
                      sd_bus_message_handler_t handler, void* userdata,
                      std::uint64_t microseconds) {
  const bool isOpen = sd_bus_message_is_method_call(call, nullptr, "Open") > 0;
  if (isOpen && failingFunction == __func__) return -ENOMEM;
  return next(sd_bus_call_async, __func__)(bus, slot, call, handler, userdata, microseconds);
}

/// The program sends no answer that has a content.
int sd_bus_reply_method_return(sd_bus_message* call, const char* /*types*/, ...) {
  if (failingFunction == __func__) return -ENOMEM;
  return next(sd_bus_reply_method_return, __func__)(call, nullptr);
}

/// Any limit of time is over at once.
int ppoll(pollfd* awaited, nfds_t count, const timespec* limit, const sigset_t* mask) {
  if (failingFunction == __func__ && limit != nullptr) return 0;
  return next(ppoll, __func__)(awaited, count, limit, mask);
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
  if (clockFile != nullptr) std::ifstream(clockFile) >> now.tv_sec;
  if (result != nullptr) *result = now.tv_sec;
  return now.tv_sec;
}
}

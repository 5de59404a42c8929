// Waiting for the bus, which may be stuck, as may be whoever is called.
#include "platform/linux/BusCall.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <ctime>

#include "platform/linux/Ending.h"
#include "platform/linux/Host.h"

namespace Vastel_Connect {
namespace {

constexpr std::uint64_t kSecond = 1'000'000;

/// After so long, whoever waits is told why nothing happens.
constexpr std::uint64_t kPatience = 3 * kSecond;

std::uint64_t monotonicMicroseconds() {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * kSecond +
         static_cast<std::uint64_t>(now.tv_nsec) / 1'000;
}

/// Waits until the bus has something to do. False: `limit` is over before.
bool waitForInput(std::uint64_t limit, bool evenAtTheEnd) {
  sd_bus* bus = host().bus;
  const int events = sd_bus_get_events(bus);
  // The library has limits of its own, as for the greeting.
  std::uint64_t due = UINT64_MAX;
  if (events < 0 || sd_bus_get_timeout(bus, &due) < 0) return true;
  const std::uint64_t now = monotonicMicroseconds();
  const std::uint64_t own = due == UINT64_MAX ? due : std::max(due, now) - now;
  return waitForDescriptor(sd_bus_get_fd(bus), static_cast<short>(events), std::min(own, limit),
                           evenAtTheEnd) ||
         own <= limit;
}

/// A message may be lost with an error of the library's. Its sender is told by the end of the
/// connection.
Waited loseBus(int error) {
  if (error == -ENOMEM) complain("out of memory: what the session bus sends is not read");
  sd_bus_close(host().bus);
  return Waited::BusGone;
}

}  // namespace

Waited waitForBus(const std::function<bool()>& isDone, std::string_view complaint) {
  std::uint64_t patience = complaint.empty() ? UINT64_MAX : kPatience;
  while (!isDone()) {
    if (isEnding()) return Waited::Ending;
    const int processed = sd_bus_process(host().bus, nullptr);
    if (processed < 0) return loseBus(processed);
    if (processed == 0 && !waitForInput(patience, false)) {
      complain(complaint);
      patience = UINT64_MAX;
    }
  }
  // The library answers what is left when the connection ends.
  return sd_bus_is_open(host().bus) > 0 ? Waited::Done : Waited::BusGone;
}

void waitForBusAtTheEnd(const std::function<bool()>& isDone) {
  while (!isDone()) {
    const int processed = sd_bus_process(host().bus, nullptr);
    if (processed < 0 || (processed == 0 && !waitForInput(kSecond, true))) return;
  }
}

std::string Answer::errorName() const {
  const sd_bus_error* error = sd_bus_message_get_error(message.get());
  return error != nullptr ? error->name : "";
}

std::string Answer::errorText() const {
  const sd_bus_error* error = sd_bus_message_get_error(message.get());
  if (error == nullptr) return "";
  std::string text = error->message != nullptr ? error->message : error->name;
  const auto isUnprintable = [](char c) { return c < ' ' || c > '~'; };
  std::replace_if(text.begin(), text.end(), isUnprintable, '?');
  return text;
}

std::string Answer::text() const {
  const char* text = nullptr;
  if (!errorName().empty()) return "";
  return sd_bus_message_read(message.get(), "s", &text) > 0 ? text : "";
}

int keepMessage(sd_bus_message* message, void* userdata, sd_bus_error* /*error*/) {
  Message& kept = *static_cast<Message*>(userdata);
  if (!kept) kept.reset(sd_bus_message_ref(message));
  return 0;
}

Answer callBus(const Message& call, std::string_view complaint) {
  Answer answer;
  sd_bus_slot* slot = nullptr;
  const int sent =
      sd_bus_call_async(host().bus, &slot, call.get(), keepMessage, &answer.message, UINT64_MAX);
  if (sent < 0) return answer;
  const Slot forgetLater(slot);
  answer.waited = waitForBus([&answer] { return answer.message != nullptr; }, complaint);
  return answer;
}

Message makeDriverCall(const char* method) {
  sd_bus_message* call = nullptr;
  sd_bus_message_new_method_call(host().bus, &call, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                 "org.freedesktop.DBus", method);
  return Message(call);
}

Answer askBusAbout(const char* method, const std::string& name) {
  const Message call = makeDriverCall(method);
  sd_bus_message_append(call.get(), "s", name.c_str());
  return callBus(call, kBusIsBusy);
}

}  // namespace Vastel_Connect

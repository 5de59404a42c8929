// What a process does that was started with links: it gives them to the one that is running.
#include "platform/linux/HandOver.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/linux/Host.h"

namespace Vastel_Connect {
namespace {

/// An application that ends just as we call it is replaced by the next call; one that does so every
/// time is broken. Far more than links are followed at once, each of which may end one.
constexpr int kAttempts = 100;

/// After so long, whoever follows a link is told why nothing happens.
constexpr std::uint64_t kPatienceMicroseconds = 3'000'000;

/// What came back from the application, or from the bus in its place.
struct Answer {
  /// Empty when the links were taken.
  std::string errorName;
  std::string errorMessage;
};

void appendText(sd_bus_message* call, const char* key, const std::optional<std::string>& text) {
  if (text) sd_bus_message_append(call, "{sv}", key, "s", text->c_str());
}

/// Null, which nobody can send, when a link is no text to sd-bus, which refuses Unicode's
/// noncharacters.
sd_bus_message* makeOpenCall(const std::vector<std::string>& links, const ActivationToken& token) {
  sd_bus_message* call = nullptr;
  sd_bus_message_new_method_call(host().bus, &call, kBusName, kObjectPath, kApplicationInterface,
                                 "Open");
  sd_bus_message_open_container(call, SD_BUS_TYPE_ARRAY, "s");
  for (const std::string& link : links) {
    if (sd_bus_message_append_basic(call, SD_BUS_TYPE_STRING, link.c_str()) < 0) {
      return sd_bus_message_unref(call);
    }
  }
  sd_bus_message_close_container(call);
  sd_bus_message_open_container(call, SD_BUS_TYPE_ARRAY, "{sv}");
  appendText(call, "activation-token", token.activationToken);
  appendText(call, "desktop-startup-id", token.startupId);
  sd_bus_message_close_container(call);
  return call;
}

int onAnswer(sd_bus_message* message, void* userdata, sd_bus_error* /*error*/) {
  Answer answer;
  if (const sd_bus_error* error = sd_bus_message_get_error(message)) {
    answer.errorName = error->name;
    if (error->message != nullptr) answer.errorMessage = error->message;
  }
  *static_cast<std::optional<Answer>*>(userdata) = std::move(answer);
  return 1;
}

/// Waits for as long as it takes. An application that is busy has the call in its queue, and
/// carries it out when it goes on: whoever gave up would report a link as refused that is opened
/// later. Absent when the connection fails.
std::optional<Answer> waitForAnswer(const std::optional<Answer>& answer) {
  std::uint64_t patience = kPatienceMicroseconds;
  while (!answer) {
    int result = sd_bus_process(host().bus, nullptr);
    if (result == 0) {
      result = sd_bus_wait(host().bus, patience);
      if (result == 0) {
        complain("the application is busy: the link waits until it goes on");
        patience = UINT64_MAX;
      }
    }
    if (result < 0) return std::nullopt;
  }
  return answer;
}

/// Whether an error says that no process could be called. The bus has many names for the reason
/// why it could not start one.
bool saysNobodyThere(std::string_view name) {
  return name == SD_BUS_ERROR_SERVICE_UNKNOWN || name == SD_BUS_ERROR_NAME_HAS_NO_OWNER ||
         name == "org.freedesktop.DBus.Error.TimedOut" ||
         name.starts_with("org.freedesktop.DBus.Error.Spawn.") ||
         name.starts_with("org.freedesktop.systemd1.");
}

HandOver refuse(const std::string& reason) {
  complain(reason);
  return HandOver::Refused;
}

/// Absent when the application ended without an answer.
std::optional<HandOver> handOverOnce(const std::vector<std::string>& links,
                                     const ActivationToken& token) {
  sd_bus_message* call = makeOpenCall(links, token);
  std::optional<Answer> kept;
  sd_bus_slot* slot = nullptr;
  const int queued = sd_bus_call_async(host().bus, &slot, call, onAnswer, &kept, UINT64_MAX);
  // Before `kept` goes: the end of the bus is an answer, too, which would still come.
  const std::unique_ptr<sd_bus_slot, decltype(&sd_bus_slot_unref)> wait(slot, sd_bus_slot_unref);
  sd_bus_message_unref(call);
  if (queued < 0) return refuse("the link was refused: the bus does not carry it");
  const auto answer = waitForAnswer(kept);
  if (!answer || sd_bus_is_open(host().bus) <= 0) {
    return refuse("the session bus is gone: the link may have been opened, or not");
  }
  if (answer->errorName.empty()) return HandOver::Done;
  if (saysNobodyThere(answer->errorName)) return HandOver::NobodyThere;
  // An application answers before it acts, so one that ended without an answer has not acted.
  if (answer->errorName == SD_BUS_ERROR_NO_REPLY) return std::nullopt;
  return refuse("the link was refused: " + answer->errorMessage);
}

}  // namespace

HandOver handOverLinks(const std::vector<std::string>& links, const ActivationToken& token) {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    if (const auto result = handOverOnce(links, token)) return *result;
  }
  return refuse("the link was not taken: the application ends before it answers");
}

}  // namespace Vastel_Connect

// What a process does that was started with links: it gives them to the one that is running.
#include "platform/linux/HandOver.h"

#include <optional>
#include <string_view>

#include "platform/linux/BusCall.h"
#include "platform/linux/Host.h"
#include "platform/linux/SessionBus.h"

namespace Vastel_Connect {
namespace {

/// An application that ends just as we call it is replaced by the next call; one that does so every
/// time is broken. Far more than links are followed at once, each of which may end one.
constexpr int kAttempts = 100;

/// What became of one attempt.
enum class Attempt { Taken, NobodyThere, Refused, OwnerLeft };

void appendText(sd_bus_message* call, const char* key, const std::optional<std::string>& text) {
  if (text) sd_bus_message_append(call, "{sv}", key, "s", text->c_str());
}

/// A call of Open. Null when the library does not take a link for text: it refuses the 66 code
/// points that Unicode calls noncharacters.
Message makeOpenCall(const std::string& destination, const std::vector<std::string>& links,
                     const ActivationToken& token) {
  sd_bus_message* call = nullptr;
  sd_bus_message_new_method_call(host().bus, &call, destination.c_str(), kObjectPath,
                                 kApplicationInterface, "Open");
  Message result(call);
  sd_bus_message_open_container(call, SD_BUS_TYPE_ARRAY, "s");
  for (const std::string& link : links) {
    if (sd_bus_message_append_basic(call, SD_BUS_TYPE_STRING, link.c_str()) < 0) return nullptr;
  }
  sd_bus_message_close_container(call);
  sd_bus_message_open_container(call, SD_BUS_TYPE_ARRAY, "{sv}");
  appendText(call, "activation-token", token.activationToken);
  appendText(call, "desktop-startup-id", token.startupId);
  sd_bus_message_close_container(call);
  return result;
}

/// Whether an error says that no process could be called. The bus has many names for the reason
/// why it could not start one.
bool saysNobodyThere(std::string_view name) {
  return name == SD_BUS_ERROR_SERVICE_UNKNOWN || name == SD_BUS_ERROR_NAME_HAS_NO_OWNER ||
         name == "org.freedesktop.DBus.Error.TimedOut" ||
         name.starts_with("org.freedesktop.DBus.Error.Spawn.") ||
         name.starts_with("org.freedesktop.systemd1.");
}

Attempt refuse(const std::string& reason) {
  complain(reason);
  return Attempt::Refused;
}

/// Keeps the first message that says who has the application's name, while it lives.
class NameWatch {
 public:
  NameWatch() {
    sd_bus_slot* slot = nullptr;
    sd_bus_add_match_async(host().bus, &slot,
                           "type='signal',sender='org.freedesktop.DBus',"
                           "interface='org.freedesktop.DBus',member='NameOwnerChanged',"
                           "arg0='com.vastel.Connect'",
                           keepMessage, nullptr, &change_);
    slot_.reset(slot);
  }

  /// The owner that was seen first, the earlier one of a change; empty when none was seen.
  [[nodiscard]] std::string owner() const {
    const char* name = nullptr;
    const char* before = "";
    const char* after = "";
    sd_bus_message_read(change_.get(), "sss", &name, &before, &after);
    return *before != '\0' ? before : after;
  }

 private:
  Message change_;
  Slot slot_;
};

/// Whether a process that was asked is on the bus no more.
bool hasLeft(const std::string& owner) {
  int isThere = 1;
  const Answer answer = askBusAbout("NameHasOwner", owner);
  return sd_bus_message_read(answer.message.get(), "b", &isThere) > 0 && isThere == 0;
}

Attempt readAnswer(const Answer& answer, const std::string& owner, bool isUnique) {
  const std::string error = answer.errorName();
  if (error.empty()) return Attempt::Taken;
  if (error == SD_BUS_ERROR_NO_REPLY) {
    // An application answers before it acts, so one that left without an answer has not acted. But
    // the bus also waits no longer than it was told to, and the call stays where it is.
    const std::string asked = !owner.empty() ? owner : askBusAbout("GetNameOwner", kBusName).text();
    if (asked.empty() || hasLeft(asked)) return Attempt::OwnerLeft;
    return refuse("no answer comes any more: the link may have been opened, or not");
  }
  if (!saysNobodyThere(error)) return refuse("the link was refused: " + answer.errorText());
  return isUnique ? Attempt::OwnerLeft : Attempt::NobodyThere;
}

Attempt handOverOnce(const std::vector<std::string>& links, const ActivationToken& token) {
  const Answer known = askBusAbout("GetNameOwner", kBusName);
  if (known.waited != Waited::Done) {
    closeSessionBus();
    return Attempt::NobodyThere;
  }
  // The process itself is called, so that it is known which one to look for if it does not answer.
  const std::string owner = known.text();
  const bool isUnique = !owner.empty();
  std::optional<NameWatch> watch;
  if (!isUnique) watch.emplace();
  const Message call = makeOpenCall(isUnique ? owner : kBusName, links, token);
  const Answer answer = callBus(call, "the application is busy: the link waits until it goes on");
  if (answer.waited == Waited::BusGone) {
    return refuse("the session bus is gone: the link may have been opened, or not");
  }
  if (!answer.message) return refuse("the link was refused: the bus does not carry it");
  return readAnswer(answer, isUnique ? owner : watch->owner(), isUnique);
}

}  // namespace

HandOver handOverLinks(const std::vector<std::string>& links, const ActivationToken& token) {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    switch (handOverOnce(links, token)) {
      case Attempt::Taken:
        return HandOver::Done;
      case Attempt::NobodyThere:
        return HandOver::NobodyThere;
      case Attempt::Refused:
        return HandOver::Refused;
      case Attempt::OwnerLeft:
        break;
    }
  }
  refuse("the link was not taken: the application ends before it answers");
  return HandOver::Refused;
}

}  // namespace Vastel_Connect

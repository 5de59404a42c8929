// What a process does that was started with links: it gives them to the one that is running.
#include "platform/linux/HandOver.h"

#include <string_view>

#include "platform/linux/Host.h"

namespace Vastel_Connect {
namespace {

/// An application that ends just as we call it is replaced by the next call; one that does so every
/// time is broken. Far more than links are followed at once, each of which may end one.
constexpr int kAttempts = 100;

void appendText(sd_bus_message* call, const char* key, const std::optional<std::string>& text) {
  if (text) sd_bus_message_append(call, "{sv}", key, "s", text->c_str());
}

/// Null when a link is no text to sd-bus, which refuses Unicode's noncharacters.
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

/// Whether an error says that no process could be called. The bus has many names for the reason
/// why it could not start one.
bool saysNobodyThere(const sd_bus_error& error) {
  const std::string_view name = error.name != nullptr ? error.name : "";
  return name == SD_BUS_ERROR_SERVICE_UNKNOWN || name == SD_BUS_ERROR_NAME_HAS_NO_OWNER ||
         name == "org.freedesktop.DBus.Error.TimedOut" ||
         name.starts_with("org.freedesktop.DBus.Error.Spawn.") ||
         name.starts_with("org.freedesktop.systemd1.");
}

}  // namespace

HandOver handOverLinks(const std::vector<std::string>& links, const ActivationToken& token) {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    sd_bus_message* call = makeOpenCall(links, token);
    if (call == nullptr) {
      complain("the link was refused: the bus does not carry it");
      return HandOver::Refused;
    }
    sd_bus_error error{};
    const int result = sd_bus_call(host().bus, call, 0, &error, nullptr);
    sd_bus_message_unref(call);
    if (result >= 0) return HandOver::Done;

    // An application answers before it acts, so one that ended without an answer has not acted.
    const bool endedUnread = sd_bus_error_has_name(&error, SD_BUS_ERROR_NO_REPLY) > 0;
    const bool nobodyThere = saysNobodyThere(error);
    const std::string reason = error.message != nullptr ? error.message : "";
    sd_bus_error_free(&error);
    if (sd_bus_is_open(host().bus) <= 0) return HandOver::NoBus;
    if (nobodyThere) return HandOver::NobodyThere;
    if (!endedUnread) {
      complain("the link was refused: " + reason);
      return HandOver::Refused;
    }
  }
  complain("the link was not taken: the application ends before it answers");
  return HandOver::Refused;
}

}  // namespace Vastel_Connect

// The application on the session bus: its connection, its object, and its name.
#include "platform/linux/SessionBus.h"

#include <cerrno>
#include <cstdint>
#include <cstring>

#include "platform/linux/Host.h"

namespace Vastel_Connect {
namespace {

/// Answers a call before it is carried out: a link that stops the program is no error for whoever
/// followed it, and is never sent a second time.
int replyAtOnce(sd_bus_message* call) {
  int ret = sd_bus_reply_method_return(call, nullptr);
  if (ret >= 0) ret = sd_bus_flush(sd_bus_message_get_bus(call));
  return ret < 0 ? ret : 1;
}

/// Reads one entry of a vardict. Both known ones are texts; all others are skipped.
int readPlatformDatum(sd_bus_message* call, ActivationToken& token) {
  const char* key = nullptr;
  int ret = sd_bus_message_read(call, "s", &key);
  if (ret < 0) return ret;
  auto* text = std::strcmp(key, "activation-token") == 0     ? &token.activationToken
               : std::strcmp(key, "desktop-startup-id") == 0 ? &token.startupId
                                                             : nullptr;
  const char* contents = nullptr;
  ret = sd_bus_message_peek_type(call, nullptr, &contents);
  if (ret < 0) return ret;
  if (text == nullptr || std::strcmp(contents, "s") != 0) return sd_bus_message_skip(call, "v");
  const char* value = nullptr;
  ret = sd_bus_message_read(call, "v", "s", &value);
  if (ret > 0) *text = tokenText(value);
  return ret;
}

/// Reads a vardict. The result is negative when the message ends too soon.
int readPlatformData(sd_bus_message* call, ActivationToken& token) {
  int ret = sd_bus_message_enter_container(call, SD_BUS_TYPE_ARRAY, "{sv}");
  while (ret > 0) {
    ret = sd_bus_message_enter_container(call, SD_BUS_TYPE_DICT_ENTRY, "sv");
    if (ret > 0) ret = readPlatformDatum(call, token);
    if (ret > 0) ret = sd_bus_message_exit_container(call);
  }
  return ret;
}

int readTexts(sd_bus_message* call, std::vector<std::string>& texts) {
  int ret = sd_bus_message_enter_container(call, SD_BUS_TYPE_ARRAY, "s");
  while (ret > 0) {
    const char* text = nullptr;
    ret = sd_bus_message_read(call, "s", &text);
    if (ret > 0) texts.emplace_back(text);
  }
  return ret < 0 ? ret : sd_bus_message_exit_container(call);
}

/// Open(as uris, a{sv} platform_data), and Open(as uris) as some openers send it.
int onOpen(sd_bus_message* call, void* /*userdata*/, sd_bus_error* /*error*/) {
  std::vector<std::string> uris;
  int ret = readTexts(call, uris);
  if (ret < 0) return ret;
  ActivationToken token;
  if (sd_bus_message_has_signature(call, "asa{sv}") > 0) ret = readPlatformData(call, token);
  if (ret < 0) return ret;
  ret = replyAtOnce(call);
  if (ret < 0) return ret;
  for (const std::string& uri : uris) deliverUri(uri, token);
  return ret;
}

/// The application has no window to raise and no action: it is running, which is all they ask for.
int onActivate(sd_bus_message* call, void* /*userdata*/, sd_bus_error* /*error*/) {
  return replyAtOnce(call);
}

/// Takes the form of Open that the table below cannot hold beside the other.
int onAnyCall(sd_bus_message* call, void* userdata, sd_bus_error* error) {
  const bool isShortOpen = sd_bus_message_is_method_call(call, kApplicationInterface, "Open") > 0 &&
                           sd_bus_message_has_signature(call, "as") > 0;
  return isShortOpen ? onOpen(call, userdata, error) : 0;
}

const sd_bus_vtable kApplicationTable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_ARGS("Activate", SD_BUS_ARGS("a{sv}", platform_data), SD_BUS_NO_RESULT,
                            onActivate, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("Open", SD_BUS_ARGS("as", uris, "a{sv}", platform_data),
                            SD_BUS_NO_RESULT, onOpen, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("ActivateAction",
                            SD_BUS_ARGS("s", action_name, "av", parameter, "a{sv}", platform_data),
                            SD_BUS_NO_RESULT, onActivate, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

std::uint64_t requestFlags(NameRequest request) {
  std::uint64_t flags = SD_BUS_NAME_ALLOW_REPLACEMENT;
  if (request != NameRequest::IfFree) flags |= SD_BUS_NAME_QUEUE;
  if (request == NameRequest::TakeOver) flags |= SD_BUS_NAME_REPLACE_EXISTING;
  return flags;
}

}  // namespace

bool connectSessionBus() {
  sd_bus*& bus = host().bus;
  const char* name = nullptr;
  // Our unique name is the bus' answer to our greeting. A link that left beside the greeting might
  // be opened although the connection failed.
  const bool connected = sd_bus_open_user(&bus) >= 0 && sd_bus_get_unique_name(bus, &name) >= 0 &&
                         sd_bus_add_object(bus, nullptr, kObjectPath, onAnyCall, nullptr) >= 0 &&
                         sd_bus_add_object_vtable(bus, nullptr, kObjectPath, kApplicationInterface,
                                                  kApplicationTable, nullptr) >= 0;
  if (!connected) bus = sd_bus_unref(bus);
  return connected;
}

std::optional<bool> requestBusName(NameRequest request) {
  const int ret = sd_bus_request_name(host().bus, kBusName, requestFlags(request));
  if (ret < 0 && ret != -EEXIST) return std::nullopt;
  if (ret > 0 && request == NameRequest::IfFree) {
    // Ours now. Asked for once more so that whoever takes it over leaves us in line for it.
    sd_bus_request_name(host().bus, kBusName, requestFlags(NameRequest::Queue));
  }
  return ret > 0;
}

void receiveLaunchLinks() {
  sd_bus*& bus = host().bus;
  // The bus sends what waited for the name together with it, and so before any later answer.
  int ret = sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                               "org.freedesktop.DBus", "GetId", nullptr, nullptr, nullptr);
  std::uint64_t count = 0;
  while (ret > 0 && sd_bus_get_n_queued_read(bus, &count) >= 0 && count > 0) {
    ret = sd_bus_process(bus, nullptr);
  }
  // A call may be lost with it. Its sender is told by the end of the connection.
  if (ret < 0 || sd_bus_is_open(bus) <= 0) bus = sd_bus_close_unref(bus);
}

void leaveBus() {
  sd_bus*& bus = host().bus;
  if (bus == nullptr) return;
  sd_bus_release_name(bus, kBusName);
  while (sd_bus_process(bus, nullptr) > 0) {
  }
  bus = sd_bus_flush_close_unref(bus);
}

}  // namespace Vastel_Connect

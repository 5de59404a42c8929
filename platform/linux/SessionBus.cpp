// The application on the session bus: its connection, its object, and its name.
#include "platform/linux/SessionBus.h"

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>

#include "platform/Platform.h"
#include "platform/linux/BusCall.h"
#include "platform/linux/Ending.h"
#include "platform/linux/Environment.h"
#include "platform/linux/Host.h"
#include "text/Ascii.h"

namespace Vastel_Connect {
namespace {

/// Answers a call before it is carried out: a link that stops the program is no error for whoever
/// followed it, and is never sent a second time.
int replyAtOnce(sd_bus_message* call) {
  int ret = sd_bus_reply_method_return(call, nullptr);
  if (ret < 0) return ret;
  do {
    ret = sd_bus_flush(host().bus);
  } while (ret == -EINTR);
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
int open(sd_bus_message* call) {
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

/// The bus' library is C: no exception may pass through it. The sender is told that there is no
/// memory, unless it was answered before.
template <int (*function)(sd_bus_message*)>
int guarded(sd_bus_message* call, void* /*userdata*/, sd_bus_error* /*error*/) {
  try {
    return function(call);
  } catch (const std::exception&) {
    complain("out of memory: a call was refused");
    return -ENOMEM;
  }
}

constexpr sd_bus_message_handler_t onOpen = guarded<open>;

/// The application has no window to raise and no action: it is running, which is all they ask for.
constexpr sd_bus_message_handler_t onActivate = guarded<replyAtOnce>;

/// A method of the table below has one signature. Open without platform data comes here.
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

/// The address of the session bus; empty where there is none.
std::string busAddress() {
  const std::string runtimeFolder = environmentText("XDG_RUNTIME_DIR");
  return environmentText("DBUS_SESSION_BUS_ADDRESS",
                         runtimeFolder.empty()
                             ? ""
                             : "unix:path=" + escapeBytes(runtimeFolder, "-_/.*", "%") + "/bus");
}

// The flags of RequestName, and its answer, as the bus documents them.
constexpr std::uint32_t kAllowReplacement = 1;
constexpr std::uint32_t kReplaceExisting = 2;
constexpr std::uint32_t kIsOwner = 1;

/// Waits for a second at most until the bus has read what was answered. It drops the rest with a
/// connection that ends while messages to it are unread, tells the senders that there was no
/// answer, and they follow their links again.
void letBusReadAnswers() {
  sd_bus_call(host().bus, makeDriverCall("GetId").get(), 1'000'000, nullptr, nullptr);
}

/// Gives the name back, and delivers what had arrived by then. What comes later is left unread, as
/// the end of the connection tells whoever sent it: somebody may send to our unique name for ever.
void releaseBusName() {
  const Message call = makeDriverCall("ReleaseName");
  sd_bus_message_append(call.get(), "s", kBusName);
  Message answer;
  sd_bus_slot* slot = nullptr;
  if (sd_bus_call_async(host().bus, &slot, call.get(), keepMessage, &answer, UINT64_MAX) < 0)
    return;
  const Slot forgetLater(slot);
  waitForBusAtTheEnd([&answer] { return answer != nullptr; });
  if (answer) letBusReadAnswers();
}

/// The bus is of no use, or the program is to end.
NameAnswer noName(const Answer& answer) {
  if (isEnding()) return NameAnswer::Waiting;
  complain(answer.errorName().empty() ? std::string(kNoBus)
                                      : "no link can arrive: " + answer.errorText());
  closeSessionBus();
  return NameAnswer::None;
}

}  // namespace

bool connectSessionBus() {
  sd_bus*& bus = host().bus;
  // As the library's own function for it has it, but for descriptors: a call that brought some
  // would end the connection when there is no room for them.
  const std::string address = busAddress();
  const bool begun = !address.empty() && sd_bus_new(&bus) >= 0 &&
                     sd_bus_set_address(bus, address.c_str()) >= 0 &&
                     sd_bus_set_bus_client(bus, 1) >= 0 && sd_bus_negotiate_fds(bus, 0) >= 0 &&
                     sd_bus_start(bus) >= 0;
  if (!begun) closeSessionBus();
  return begun;
}

void closeSessionBus() {
  host().bus = sd_bus_close_unref(host().bus);
}

NameAnswer requestBusName(NameRequest request) {
  sd_bus* bus = host().bus;
  if (sd_bus_add_object(bus, nullptr, kObjectPath, onAnyCall, nullptr) < 0 ||
      sd_bus_add_object_vtable(bus, nullptr, kObjectPath, kApplicationInterface, kApplicationTable,
                               nullptr) < 0) {
    return noName({});
  }
  const Message call = makeDriverCall("RequestName");
  sd_bus_message_append(
      call.get(), "su", kBusName,
      kAllowReplacement | (request == NameRequest::TakeOver ? kReplaceExisting : 0));
  const Answer answer = callBus(call, kBusIsBusy);
  std::uint32_t result = 0;
  if (answer.waited != Waited::Done || sd_bus_message_read(answer.message.get(), "u", &result) < 0)
    return noName(answer);
  return result == kIsOwner ? NameAnswer::Ours : NameAnswer::Waiting;
}

void receiveLaunchLinks() {
  // The bus sends what waited for the name together with it, and so before any later answer. Should
  // the connection end, whoever waits for links is told so next.
  static_cast<void>(callBus(makeDriverCall("GetId"), kBusIsBusy));
}

// LCOV_EXCL_START: nothing is counted of a process that ends here, as it does in a test.
void platform::stopProgram() {
  if (host().bus != nullptr) letBusReadAnswers();
  std::_Exit(kStopStatus);
}
// LCOV_EXCL_STOP

void leaveBus() {
  if (host().bus != nullptr) releaseBusName();
  closeSessionBus();
}

}  // namespace Vastel_Connect

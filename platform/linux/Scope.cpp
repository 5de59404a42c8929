#include "platform/linux/Scope.h"

#include <cstdint>

#include "platform/linux/Host.h"
#include "text/Ascii.h"

namespace Vastel_Connect {

std::string scopeName(pid_t child, const std::string& application) {
  return "app-vastel\\x2dconnect-" + escapeBytes(application, "_.:", "\\x") + "-" +
         std::to_string(child) + ".scope";
}

void startScope(pid_t child, const std::string& application) {
  if (host().bus == nullptr) return;
  sd_bus_message* call = nullptr;
  if (sd_bus_message_new_method_call(
          host().bus, &call, "org.freedesktop.systemd1", "/org/freedesktop/systemd1",
          "org.freedesktop.systemd1.Manager", "StartTransientUnit") < 0) {
    return;
  }
  sd_bus_message_set_auto_start(call, 0);
  sd_bus_message_append(call, "ssa(sv)a(sa(sv))", scopeName(child, application).c_str(), "fail", 3,
                        "PIDs", "au", 1, static_cast<std::uint32_t>(child), "Slice", "s",
                        "app.slice", "CollectMode", "s", "inactive-or-failed", 0);
  // Without a place for the call's number, the library asks for no answer.
  sd_bus_send(host().bus, call, nullptr);
  sd_bus_message_unref(call);
}

}  // namespace Vastel_Connect

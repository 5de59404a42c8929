// Takes the name com.vastel.Bare on the session bus, exports one empty method and waits.
#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

static int onOpen(sd_bus_message* call, void* userdata, sd_bus_error* error) {
  (void)userdata;
  (void)error;
  return sd_bus_reply_method_return(call, NULL);
}

static const sd_bus_vtable table[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Open", "asa{sv}", "", onOpen, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

int main(void) {
  sd_event* loop = NULL;
  sd_bus* bus = NULL;
  if (sd_event_new(&loop) < 0 || sd_bus_open_user(&bus) < 0 ||
      sd_bus_add_object_vtable(bus, NULL, "/com/vastel/Bare", "org.freedesktop.Application", table,
                               NULL) < 0 ||
      sd_bus_request_name(bus, "com.vastel.Bare", 0) < 0 ||
      sd_bus_attach_event(bus, loop, SD_EVENT_PRIORITY_NORMAL) < 0) {
    return 1;
  }
  return sd_event_loop(loop) < 0;
}

// Takes the name com.vastel.Bare on the session bus, exports one empty method and waits.
#include <gio/gio.h>

static const char description[] =
    "<node><interface name='org.freedesktop.Application'><method name='Open'>"
    "<arg type='as' direction='in'/><arg type='a{sv}' direction='in'/>"
    "</method></interface></node>";

static void onCall(GDBusConnection* bus, const char* sender, const char* path,
                   const char* interface, const char* method, GVariant* arguments,
                   GDBusMethodInvocation* call, void* data) {
  (void)bus, (void)sender, (void)path, (void)interface, (void)method, (void)arguments, (void)data;
  g_dbus_method_invocation_return_value(call, NULL);
}

static const GDBusInterfaceVTable table = {.method_call = onCall};

static void onBus(GDBusConnection* bus, const char* name, void* data) {
  (void)name, (void)data;
  GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(description, NULL);
  g_dbus_connection_register_object(bus, "/com/vastel/Bare", node->interfaces[0], &table, NULL,
                                    NULL, NULL);
  g_dbus_node_info_unref(node);
}

int main(void) {
  g_bus_own_name(G_BUS_TYPE_SESSION, "com.vastel.Bare", G_BUS_NAME_OWNER_FLAGS_NONE, onBus, NULL,
                 NULL, NULL, NULL);
  g_main_loop_run(g_main_loop_new(NULL, FALSE));
  return 0;
}

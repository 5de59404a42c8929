// An application without a window that takes links and opens nothing.
#include <gio/gio.h>

static void onOpen(GApplication* application, GFile** files, int count, const char* hint,
                   void* data) {
  (void)application, (void)files, (void)count, (void)hint, (void)data;
}

int main(int argc, char** argv) {
  GApplication* application = g_application_new("com.vastel.Bare", G_APPLICATION_HANDLES_OPEN);
  g_signal_connect(application, "activate", G_CALLBACK(g_application_hold), NULL);
  g_signal_connect(application, "open", G_CALLBACK(onOpen), NULL);
  return g_application_run(application, argc, argv);
}

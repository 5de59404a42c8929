// Opens pages in-process by GIO.
#include <gio/gio.h>

#include "bench/peers/OpenEachLine.h"

static void openPage(const char* page) {
  g_app_info_launch_default_for_uri(page, NULL, NULL);
  // GIO reaps its children in the main loop.
  while (g_main_context_iteration(NULL, FALSE)) {
  }
}

int main(void) {
  return openEachLine(openPage);
}

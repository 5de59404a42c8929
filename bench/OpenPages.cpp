// Opens pages as the program does.
#include "bench/peers/OpenEachLine.h"
#include "platform/Platform.h"
#include "platform/linux/Spawn.h"

int main() {
  Vastel_Connect::letKernelReapChildren();
  return openEachLine([](const char* page) { Vastel_Connect::platform::openUrl(page); });
}

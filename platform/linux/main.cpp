#include "platform/linux/ApplicationMain.h"

int main(int argc, char** argv) {
  return Vastel_Connect::applicationMain(argc, argv);
}

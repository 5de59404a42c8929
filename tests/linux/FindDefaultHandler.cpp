// FindDefaultHandler <scheme> <url>: prints what findDefaultHandler finds, each text followed by a
// NUL: the application, the program, the arguments. Prints nothing when the answer is not plain.
#include <iostream>

#include "platform/linux/DefaultHandler.h"

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const auto handler = Vastel_Connect::findDefaultHandler(argv[1], argv[2]);
  if (!handler) return 0;
  std::cout << handler->application << '\0' << handler->program << '\0';
  for (const std::string& argument : handler->arguments) std::cout << argument << '\0';
  return 0;
}

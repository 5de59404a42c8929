// An application that prints what it was started as, each text followed by a NUL: its path, its
// arguments.
#include <sys/auxv.h>

#include <iostream>

int main(int argc, char** argv) {
  std::cout << reinterpret_cast<const char*>(::getauxval(AT_EXECFN)) << '\0';
  for (int i = 0; i < argc; ++i) std::cout << argv[i] << '\0';
}

// Files of the desktop's "[group]" and "key=value" form.
#include <sys/mman.h>
#include <unistd.h>

#include "fuzz/Fuzz.h"
#include "fuzz/KeyFileReference.h"
#include "platform/linux/KeyFile.h"

using namespace Vastel_Connect;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const int file = ::memfd_create("input", MFD_CLOEXEC);
  static const std::string path = "/proc/self/fd/" + std::to_string(file);
  if (::ftruncate(file, 0) != 0 || ::pwrite(file, data, size, 0) != static_cast<ssize_t>(size)) {
    return 0;
  }
  const auto entries = reference::keyFile(fuzz::textOf(data, size));
  const auto keyFile = KeyFile::read(path);
  fuzz::expect(keyFile.has_value() == entries.has_value(), "is it such a file");
  if (!keyFile) return 0;
  fuzz::expect(keyFile->firstGroup() == entries->firstGroup, "the first group");
  for (const auto& [name, value] : entries->values) {
    fuzz::expect(keyFile->value(name.first, name.second) == value, "a value");
  }
  fuzz::expect(!keyFile->value("no such group", "Key"), "a value of nowhere");
  fuzz::expect(!keyFile->value(entries->firstGroup, "no such key"), "a value of no key");
  return 0;
}

#include "platform/linux/TextFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace Vastel_Connect {
namespace {

/// Far above what a desktop with all its applications has in one file.
constexpr std::size_t kSizeLimit = std::size_t{1} << 20;

/// Closes a descriptor also where there is no memory for the text.
struct Closing {
  int file;
  ~Closing() { ::close(file); }
};

TextFile readAll(int file) {
  struct stat status = {};
  if (::fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
    return {.text = {}, .error = "it is no regular file"};
  }
  const auto size = static_cast<std::size_t>(status.st_size);
  if (size > kSizeLimit) return {.text = {}, .error = "it is larger than 1 MiB"};
  TextFile result;
  // One more, to see what has grown.
  result.text.resize(size + 1);
  const ssize_t length = ::read(file, result.text.data(), result.text.size());
  result.text.resize(size);
  if (length != status.st_size) result.error = "it changes while it is read";
  return result;
}

}  // namespace

TextFile readTextFile(const std::string& path) {
  // Not to wait for the writer of a FIFO.
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (file < 0) {
    const bool isMissing = errno == ENOENT || errno == ENOTDIR;
    return {.text = {}, .error = "it cannot be opened", .isMissing = isMissing};
  }
  const Closing closing{file};
  return readAll(file);
}

}  // namespace Vastel_Connect

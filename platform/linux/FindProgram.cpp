#include "platform/linux/FindProgram.h"

#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/Environment.h"
#include "text/Split.h"

namespace Vastel_Connect {
namespace {

bool isExecutable(const std::string& path) {
  struct stat status = {};
  return ::access(path.c_str(), X_OK) == 0 && ::stat(path.c_str(), &status) == 0 &&
         S_ISREG(status.st_mode);
}

}  // namespace

std::optional<std::string> findProgram(const std::string& name) {
  if (name.starts_with('/')) return isExecutable(name) ? std::optional(name) : std::nullopt;
  if (name.empty() || name.find('/') != name.npos) return std::nullopt;
  for (const std::string& folder : splitWords(environmentText("PATH"), ":")) {
    if (!folder.starts_with('/')) continue;
    std::string program = folder + "/" + name;
    if (isExecutable(program)) return program;
  }
  return std::nullopt;
}

}  // namespace Vastel_Connect

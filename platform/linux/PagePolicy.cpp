#include "platform/linux/PagePolicy.h"

#include <sys/stat.h>

#include <cerrno>
#include <optional>
#include <utility>

#include "platform/linux/Host.h"
#include "platform/linux/KeyFile.h"
#include "platform/linux/TextFile.h"
#include "text/SchemeList.h"

namespace Vastel_Connect {
namespace {

/// Above the length of any scheme, and short enough for a line.
constexpr std::size_t kShownLength = 64;

/// Whether nothing is there, not even a link that leads to nothing. This also works where no
/// descriptor is left.
bool isAbsent(const std::string& path) {
  struct stat status = {};
  return ::lstat(path.c_str(), &status) != 0 && errno == ENOENT;
}

/// Why a page of `scheme` is not opened; absent when it is.
std::optional<std::string> objection(const std::string& path, std::string_view scheme) {
  TextFile file = readTextFile(path);
  if (!file.error.empty()) return std::string(file.error);
  const auto keys = KeyFile::parse(std::move(file.text));
  if (!keys) return "it is no key file";
  const auto schemes = keys->value("Pages", "Schemes");
  if (!schemes) return "it has no Schemes in [Pages]";
  if (listHasScheme(*schemes, scheme)) return std::nullopt;
  return "its Schemes lack " + std::string(scheme.substr(0, kShownLength));
}

}  // namespace

bool permitsPage(const std::string& path, std::string_view scheme) {
  if (isAbsent(path)) return true;
  const auto reason = objection(path, scheme);
  if (reason) complain("the scheme of a page is not permitted by " + path + ": " + *reason);
  return !reason;
}

}  // namespace Vastel_Connect

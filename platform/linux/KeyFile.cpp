#include "platform/linux/KeyFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace Vastel_Connect {
namespace {

/// Far above what a desktop with all its applications has in one file.
constexpr std::size_t kSizeLimit = std::size_t{1} << 20;

constexpr std::string_view kBlanks = " \t";

/// Appends the content of a regular file; false for anything else, or when it is too long.
bool readFile(int file, std::string& text) {
  struct stat status {};
  if (::fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) return false;
  char block[16384];
  for (ssize_t count = 0; (count = ::read(file, block, sizeof block)) != 0;) {
    if (count < 0) return false;
    text.append(block, static_cast<std::size_t>(count));
    if (text.size() > kSizeLimit) return false;
  }
  return true;
}

/// Whether `text` can name a group, or a key without its locale: printable ASCII, no brackets.
bool isName(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return c >= ' ' && c <= '~' && c != '[' && c != ']';
  });
}

/// Whether `text` is a key, such as "Name" and "Name[de]".
bool isKey(std::string_view text) {
  if (text.find_first_of(kBlanks) != text.npos) return false;
  const std::size_t bracket = text.find('[');
  if (bracket == text.npos) return isName(text);
  return text.ends_with(']') && isName(text.substr(0, bracket)) &&
         isName(text.substr(bracket + 1, text.size() - bracket - 2));
}

}  // namespace

std::optional<KeyFile> KeyFile::read(const std::string& path) {
  KeyFile result;
  // Not to wait for the writer of a FIFO.
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (file < 0) {
    if (errno != ENOENT && errno != ENOTDIR) return std::nullopt;
    return result;
  }
  const bool complete = readFile(file, result.text_);
  ::close(file);
  if (!complete || !result.parse()) return std::nullopt;
  return result;
}

std::optional<std::string_view> KeyFile::value(std::string_view group, std::string_view key) const {
  const auto found = std::find_if(entries_.rbegin(), entries_.rend(), [&](const Entry& entry) {
    return view(entry.key) == key && view(entry.group) == group;
  });
  if (found == entries_.rend()) return std::nullopt;
  return view(found->value);
}

bool KeyFile::parse() {
  constexpr std::string_view kNotPlain("\0\a\b\v\f\r", 6);
  if (text_.find_first_of(kNotPlain) != text_.npos) return false;
  std::optional<Range> group;
  for (std::size_t begin = 0; begin < text_.size();) {
    const std::size_t end = std::min(text_.find('\n', begin), text_.size());
    const auto line = view({begin, end - begin});
    if (line.starts_with('[')) {
      if (!line.ends_with(']')) return false;
      group = Range{begin + 1, line.size() - 2};
      if (!isName(view(*group))) return false;
      if (!firstGroup_) firstGroup_ = group;
    } else if (!line.empty() && !line.starts_with('#')) {
      const std::size_t equals = line.find('=');
      if (!group || equals == line.npos) return false;
      // Of no length when there are only blanks: npos + 1 is 0.
      const Range key{begin, line.substr(0, equals).find_last_not_of(kBlanks) + 1};
      if (!isKey(view(key))) return false;
      const std::size_t value = std::min(line.find_first_not_of(kBlanks, equals + 1), line.size());
      entries_.push_back({*group, key, {begin + value, line.size() - value}});
    }
    begin = end + 1;
  }
  return true;
}

}  // namespace Vastel_Connect

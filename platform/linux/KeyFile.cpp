#include "platform/linux/KeyFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>

namespace Vastel_Connect {
namespace {

/// Far above what a desktop with all its applications has in one file.
constexpr std::size_t kSizeLimit = std::size_t{4} << 20;

constexpr std::string_view kBlanks = " \t";

}  // namespace

std::optional<KeyFile> KeyFile::read(const std::string& path) {
  KeyFile file;
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::fopen(path.c_str(), "re"),
                                                               &std::fclose);
  if (!stream) {
    if (errno != ENOENT && errno != ENOTDIR) return std::nullopt;
    return file;
  }
  file.exists_ = true;
  char block[16384];
  while (const std::size_t count = std::fread(block, 1, sizeof block, stream.get())) {
    file.text_.append(block, count);
    if (file.text_.size() > kSizeLimit) return std::nullopt;
  }
  if (std::ferror(stream.get()) != 0 || !file.parse()) return std::nullopt;
  return file;
}

std::optional<std::string_view> KeyFile::value(std::string_view group, std::string_view key) const {
  const auto found = std::find_if(entries_.rbegin(), entries_.rend(), [&](const Entry& entry) {
    return view(entry.key) == key && view(entry.group) == group;
  });
  if (found == entries_.rend()) return std::nullopt;
  return view(found->value);
}

bool KeyFile::parse() {
  if (text_.find_first_of(std::string_view("\r\0", 2)) != text_.npos) return false;
  std::optional<Range> group;
  for (std::size_t begin = 0; begin < text_.size();) {
    const std::size_t end = std::min(text_.find('\n', begin), text_.size());
    const auto line = view({begin, end - begin});
    if (line.starts_with('[')) {
      if (!line.ends_with(']')) return false;
      group = Range{begin + 1, line.size() - 2};
    } else if (!line.empty() && !line.starts_with('#')) {
      const std::size_t equals = line.find('=');
      if (!group || equals == line.npos || kBlanks.find(line.front()) != kBlanks.npos) return false;
      const std::size_t keyEnd = line.substr(0, equals).find_last_not_of(kBlanks);
      if (keyEnd == line.npos) return false;
      const std::size_t value = std::min(line.find_first_not_of(kBlanks, equals + 1), line.size());
      entries_.push_back({*group, {begin, keyEnd + 1}, {begin + value, line.size() - value}});
    }
    begin = end + 1;
  }
  return true;
}

}  // namespace Vastel_Connect

#include "platform/linux/KeyFile.h"

#include <algorithm>
#include <utility>

#include "platform/linux/TextFile.h"
#include "text/Ascii.h"

namespace Vastel_Connect {
namespace {

bool isBlank(char c) {
  return c == ' ' || c == '\t';
}

/// Whether `text` has control characters other than tabs and line feeds.
bool hasControls(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) {
    return static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\n';
  });
}

/// Whether a character is printable ASCII and no bracket.
bool isNameCharacter(char c) {
  return c >= ' ' && c <= '~' && c != '[' && c != ']';
}

/// The length of the name that `text` begins with.
std::size_t nameLength(std::string_view text) {
  const auto end = std::find_if_not(text.begin(), text.end(), isNameCharacter);
  return static_cast<std::size_t>(end - text.begin());
}

bool isName(std::string_view text) {
  return !text.empty() && nameLength(text) == text.size();
}

/// Whether `text` is a key, such as "Name" and "Name[de]".
bool isKey(std::string_view text) {
  const std::size_t name = nameLength(text);
  if (name == 0 || text.find(' ') != text.npos) return false;
  return name == text.size() || (text[name] == '[' && text.ends_with(']') &&
                                 isName(text.substr(name + 1, text.size() - name - 2)));
}

}  // namespace

std::optional<KeyFile> KeyFile::read(const std::string& path) {
  TextFile file = readTextFile(path);
  if (file.isMissing) return KeyFile();
  return file.error.empty() ? parse(std::move(file.text)) : std::nullopt;
}

std::optional<KeyFile> KeyFile::parse(std::string text) {
  KeyFile result;
  result.text_ = std::move(text);
  if (!result.readEntries()) return std::nullopt;
  return result;
}

std::optional<std::string_view> KeyFile::value(std::string_view group, std::string_view key) const {
  const auto found = std::find_if(entries_.rbegin(), entries_.rend(), [&](const Entry& entry) {
    return view(entry.key) == key && view(entry.group) == group;
  });
  if (found == entries_.rend()) return std::nullopt;
  return view(found->value);
}

bool KeyFile::readEntries() {
  if (hasControls(text_)) return false;
  // Few lines are shorter than that. Growing from nothing, the entries would make the heap give its
  // pages back to the system every time.
  entries_.reserve(text_.size() / 48);
  std::optional<Range> group;
  for (std::size_t begin = 0; begin < text_.size();) {
    const std::size_t end = std::min(text_.find('\n', begin), text_.size());
    const auto line = view(range(begin, end));
    if (line.starts_with('[')) {
      if (!line.ends_with(']')) return false;
      group = range(begin + 1, end - 1);
      if (!isName(view(*group))) return false;
      if (!firstGroup_) firstGroup_ = group;
    } else if (!line.empty() && !line.starts_with('#')) {
      const std::size_t equals = line.find('=');
      if (!group || equals == line.npos) return false;
      std::size_t keyEnd = equals;
      while (keyEnd > 0 && isBlank(line[keyEnd - 1])) --keyEnd;
      std::size_t value = equals + 1;
      while (value < line.size() && isBlank(line[value])) ++value;
      if (!isKey(line.substr(0, keyEnd))) return false;
      entries_.push_back({*group, range(begin, begin + keyEnd), range(begin + value, end)});
    }
    begin = end + 1;
  }
  return true;
}

bool isPlainValue(std::string_view value) {
  return std::all_of(value.begin(), value.end(), [](char c) {
    constexpr std::string_view kMarks = "%+,-./:;=@_";
    return isAsciiAlphanumeric(c) || kMarks.find(c) != kMarks.npos;
  });
}

}  // namespace Vastel_Connect

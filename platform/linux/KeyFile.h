#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Vastel_Connect {

/// A file of the desktop's "[group]" and "key=value" form, as far as all its readers take it in the
/// same way.
class KeyFile {
 public:
  /// A file that is missing holds no keys. Absent when it is there but has a line that is none of
  /// the form, is no regular file, is too long or cannot be read.
  [[nodiscard]] static std::optional<KeyFile> read(const std::string& path);

  /// The same of a text, which is at most 4 GiB long.
  [[nodiscard]] static std::optional<KeyFile> parse(std::string text);

  /// The name of the first group; empty when there is none.
  [[nodiscard]] std::string_view firstGroup() const {
    return firstGroup_ ? view(*firstGroup_) : std::string_view();
  }

  /// The value of a key as it stands, the last one where the key is repeated; absent when it has
  /// none. Borrowed from this object.
  [[nodiscard]] std::optional<std::string_view> value(std::string_view group,
                                                      std::string_view key) const;

 private:
  /// A part of `text_`. Small, since a desktop's list of all its types has thousands of entries.
  struct Range {
    std::uint32_t begin;
    std::uint32_t length;
  };
  struct Entry {
    Range group;
    Range key;
    Range value;
  };

  [[nodiscard]] std::string_view view(Range range) const {
    return std::string_view(text_).substr(range.begin, range.length);
  }
  [[nodiscard]] static Range range(std::size_t begin, std::size_t end) {
    return {static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(end - begin)};
  }
  /// Fills `entries_` from `text_`; false for a line that is none of the form.
  [[nodiscard]] bool readEntries();

  std::string text_;
  std::optional<Range> firstGroup_;
  std::vector<Entry> entries_;
};

/// Whether a value is free of blanks and of all that has a meaning of its own in a value or on a
/// command line.
[[nodiscard]] bool isPlainValue(std::string_view value);

}  // namespace Vastel_Connect

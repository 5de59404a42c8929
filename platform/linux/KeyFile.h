#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Vastel_Connect {

/// A file of the desktop's "[group]" and "key=value" form, as far as all its readers take it in the
/// same way.
class KeyFile {
 public:
  /// Absent when the file is there but has a line that is none of the form, or cannot be read.
  [[nodiscard]] static std::optional<KeyFile> read(const std::string& path);

  /// Whether there is such a file. One that is missing holds no keys.
  [[nodiscard]] bool exists() const { return exists_; }

  /// The value of a key as it stands, the last one where the key is repeated; absent when it has
  /// none. Borrowed from this object.
  [[nodiscard]] std::optional<std::string_view> value(std::string_view group,
                                                      std::string_view key) const;

 private:
  /// A part of `text_`.
  struct Range {
    std::size_t begin;
    std::size_t length;
  };
  struct Entry {
    Range group;
    Range key;
    Range value;
  };

  [[nodiscard]] std::string_view view(Range range) const {
    return std::string_view(text_).substr(range.begin, range.length);
  }
  /// Fills `entries_` from `text_`; false for a line that is none of the form.
  [[nodiscard]] bool parse();

  bool exists_ = false;
  std::string text_;
  std::vector<Entry> entries_;
};

}  // namespace Vastel_Connect

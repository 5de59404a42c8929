#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace Vastel_Connect {

/// A URL by its text: see formsUrl for what forms one ("" and "foo" do), and urlText for its text.
class Url {
 public:
  /// Absent when `text` does not form a URL.
  [[nodiscard]] static std::optional<Url> fromText(std::string_view text);

  [[nodiscard]] const std::string& absoluteString() const { return text_; }

  bool operator==(const Url&) const = default;

 private:
  explicit Url(std::string text) : text_(std::move(text)) {}

  std::string text_;
};

/// `text`, in which each byte that may not stand in the query of a URL (RFC 3986) is replaced by
/// "%" and two capital hex digits. "%" itself is one of them, so a text that is encoded already is
/// encoded once more; so are "#", "[" and "]". Absent when `text` is not valid UTF-8.
[[nodiscard]] std::optional<std::string> percentEncodedForQuery(std::string_view text);

}  // namespace Vastel_Connect

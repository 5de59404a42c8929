#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The program's rules once more, written for the eye and not for speed, and without a line or a
/// library of the program's.
namespace Vastel_Connect::reference {

/// The bytes that a base64 text stands for, bit by bit.
[[nodiscard]] std::optional<std::string> base64(std::string_view text);

/// Whether bytes are UTF-8, by decoding each code point and encoding it again.
[[nodiscard]] bool isUtf8(std::string_view bytes);

/// The UTF-8 of a code point.
[[nodiscard]] std::string encodeUtf8(unsigned long codePoint);

/// Whether a text forms a URL.
[[nodiscard]] bool isUrl(std::string_view text);

/// The text of the URL that a text forms.
[[nodiscard]] std::string urlText(const std::string& url);

/// The length of the scheme in front of a text's first colon; 0 without one.
[[nodiscard]] std::size_t schemeLength(std::string_view text);

/// Whether a list of schemes between semicolons has one, which is a scheme.
[[nodiscard]] bool listHasScheme(std::string_view list, std::string_view scheme);

/// A JSON value as far as the program looks at it.
struct Json {
  enum Kind { Null, True, False, Number, String, Array, Object };

  Kind kind = Null;
  /// A string's text, or a number as it is written.
  std::string text;
  std::vector<Json> elements;
  std::map<std::string, Json, std::less<>> members;
};

/// Reads a document whose top level is an object or an array, at most 512 levels deep.
[[nodiscard]] std::optional<Json> parseJson(std::string_view text);

/// The one action of a link: the log messages behind "process uri: ", and the page, if one opens.
struct Outcome {
  std::vector<std::string> messages;
  std::optional<std::string> page;
  /// The request is an array, and ends the program behind the messages.
  bool stops = false;
};

[[nodiscard]] Outcome followLink(std::string_view uri);

}  // namespace Vastel_Connect::reference

// JSON after RFC 8259, one function a rule of its grammar. A function that fails returns false, and
// what it has read by then is thrown away with the document.
#include <utility>

#include "fuzz/Reference.h"

namespace Vastel_Connect::reference {
namespace {

constexpr int kLevels = 512;

class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) {}

  bool document(Json& json) {
    return value(json, 0) && rest_.empty() &&
           (json.kind == Json::Array || json.kind == Json::Object);
  }

 private:
  bool take(std::string_view what) {
    if (!rest_.starts_with(what)) return false;
    rest_.remove_prefix(what.size());
    return true;
  }

  /// Takes the next sign into `text` if it is one of `any`.
  bool takeOneOf(std::string_view any, std::string& text) {
    if (rest_.empty() || any.find(rest_.front()) == any.npos) return false;
    text += rest_.front();
    rest_.remove_prefix(1);
    return true;
  }

  void blanks() {
    std::string taken;
    while (takeOneOf(" \t\r\n", taken)) {
    }
  }

  /// Any value, and the blanks around it. `depth` is how many objects and arrays it stands in.
  bool value(Json& json, int depth) {
    blanks();
    if (!valueAlone(json, depth)) return false;
    blanks();
    return true;
  }

  bool valueAlone(Json& json, int depth) {
    json.kind = Json::Object;
    if (take("{")) return depth < kLevels && list("}", [&] { return member(json, depth + 1); });
    json.kind = Json::Array;
    if (take("[")) {
      return depth < kLevels &&
             list("]", [&] { return value(json.elements.emplace_back(), depth + 1); });
    }
    json.kind = Json::String;
    if (take("\"")) return string(json.text);
    for (const auto& [word, kind] :
         {std::pair("null", Json::Null), {"true", Json::True}, {"false", Json::False}}) {
      json.kind = kind;
      if (take(word)) return true;
    }
    json.kind = Json::Number;
    return number(json.text);
  }

  /// Items between commas, or none, and the end of them.
  template <typename Item>
  bool list(std::string_view end, Item item) {
    blanks();
    if (take(end)) return true;
    do {
      if (!item()) return false;
    } while (take(","));
    return take(end);
  }

  bool member(Json& object, int depth) {
    Json key;
    if (!value(key, depth) || key.kind != Json::String || !take(":")) return false;
    // Of a repeated key the last value counts.
    Json& json = object.members[key.text] = Json();
    return value(json, depth);
  }

  bool string(std::string& text) {
    while (!take("\"")) {
      if (rest_.empty() || static_cast<unsigned char>(rest_.front()) < ' ') return false;
      if (take("\\")) {
        if (!escape(text)) return false;
      } else {
        text += rest_.front();
        rest_.remove_prefix(1);
      }
    }
    return isUtf8(text);
  }

  bool escape(std::string& text) {
    if (take("u")) return unicodeEscape(text);
    constexpr std::string_view kNames = "\"\\/bfnrt";
    constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t";
    std::string name;
    if (!takeOneOf(kNames, name)) return false;
    text += kMeanings[kNames.find(name)];
    return true;
  }

  /// A surrogate that is not of a pair makes no UTF-8, for which the string is refused.
  bool unicodeEscape(std::string& text) {
    unsigned long codePoint = 0;
    if (!fourHexDigits(codePoint)) return false;
    unsigned long second = 0;
    if (codePoint >= 0xD800 && codePoint <= 0xDBFF && take("\\u") && fourHexDigits(second) &&
        second >= 0xDC00 && second <= 0xDFFF) {
      codePoint = 0x10000 + (codePoint - 0xD800) * 0x400 + (second - 0xDC00);
    }
    text += encodeUtf8(codePoint);
    return true;
  }

  bool fourHexDigits(unsigned long& number) {
    std::string digits;
    for (int i = 0; i < 4; ++i) {
      if (!takeOneOf("0123456789abcdefABCDEF", digits)) return false;
    }
    number = std::stoul(digits, nullptr, 16);
    return true;
  }

  bool digits(std::string& text) {
    const auto before = text.size();
    while (takeOneOf("0123456789", text)) {
    }
    return text.size() > before;
  }

  bool number(std::string& text) {
    takeOneOf("-", text);
    if (!takeOneOf("0", text) && !digits(text)) return false;
    if (takeOneOf(".", text) && !digits(text)) return false;
    if (!takeOneOf("eE", text)) return true;
    takeOneOf("+-", text);
    return digits(text);
  }

  std::string_view rest_;
};

}  // namespace

std::optional<Json> parseJson(std::string_view text) {
  Json json;
  if (!Reader(text).document(json)) return std::nullopt;
  return json;
}

}  // namespace Vastel_Connect::reference

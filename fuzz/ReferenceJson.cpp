// JSON after RFC 8259, one function a rule of its grammar. A function that fails returns false, and
// what it has read by then is thrown away with the document.
#include <algorithm>
#include <utility>

#include "fuzz/Reference.h"

namespace Vastel_Connect::reference {
namespace {

constexpr int kLevels = 512;

class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) {}

  bool document(Json& json) {
    blanks();
    if (!value(json, 0)) return false;
    blanks();
    return rest_.empty() && (json.kind == Json::Array || json.kind == Json::Object);
  }

 private:
  bool take(std::string_view what) {
    if (rest_.substr(0, what.size()) != what) return false;
    rest_.remove_prefix(what.size());
    return true;
  }

  [[nodiscard]] bool sees(std::string_view any) const {
    return !rest_.empty() && any.find(rest_.front()) != any.npos;
  }

  /// Takes the next sign into `text` if it is one of `any`.
  bool takeOneOf(std::string_view any, std::string& text) {
    if (!sees(any)) return false;
    text += rest_.front();
    rest_.remove_prefix(1);
    return true;
  }

  void blanks() {
    while (sees(" \t\r\n")) rest_.remove_prefix(1);
  }

  bool value(Json& json, int depth) {
    if (sees("{")) return depth < kLevels && object(json, depth + 1);
    if (sees("[")) return depth < kLevels && array(json, depth + 1);
    if (sees("\"")) {
      json.kind = Json::String;
      return string(json.text);
    }
    for (const auto& [word, kind] :
         {std::pair("null", Json::Null), {"true", Json::True}, {"false", Json::False}}) {
      json.kind = kind;
      if (take(word)) return true;
    }
    json.kind = Json::Number;
    return number(json.text);
  }

  bool array(Json& json, int depth) {
    json.kind = Json::Array;
    take("[");
    blanks();
    if (take("]")) return true;
    do {
      blanks();
      if (!value(json.elements.emplace_back(), depth)) return false;
      blanks();
    } while (take(","));
    return take("]");
  }

  bool object(Json& json, int depth) {
    json.kind = Json::Object;
    take("{");
    blanks();
    if (take("}")) return true;
    do {
      blanks();
      std::string key;
      Json member;
      if (!sees("\"") || !string(key)) return false;
      blanks();
      if (!take(":")) return false;
      blanks();
      if (!value(member, depth)) return false;
      json.store(key, std::move(member));
      blanks();
    } while (take(","));
    return take("}");
  }

  bool string(std::string& text) {
    take("\"");
    while (!take("\"")) {
      if (rest_.empty()) return false;
      const char c = rest_.front();
      if (static_cast<unsigned char>(c) < ' ') return false;
      rest_.remove_prefix(1);
      if (c != '\\') {
        text += c;
      } else if (!escape(text)) {
        return false;
      }
    }
    return isUtf8(text);
  }

  bool escape(std::string& text) {
    if (take("u")) return unicodeEscape(text);
    constexpr std::string_view kNames = "\"\\/bfnrt";
    constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t";
    if (!sees(kNames)) return false;
    text += kMeanings[kNames.find(rest_.front())];
    rest_.remove_prefix(1);
    return true;
  }

  /// A surrogate stands for nothing but as the first of a pair.
  bool unicodeEscape(std::string& text) {
    unsigned long codePoint = 0;
    if (!fourHexDigits(codePoint) || (codePoint >= 0xDC00 && codePoint <= 0xDFFF)) return false;
    if (codePoint >= 0xD800 && codePoint <= 0xDBFF) {
      unsigned long second = 0;
      if (!take("\\u") || !fourHexDigits(second)) return false;
      if (second < 0xDC00 || second > 0xDFFF) return false;
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

const Json* Json::member(std::string_view key) const {
  const auto found = std::find_if(members.begin(), members.end(),
                                  [key](const auto& each) { return each.key == key; });
  return found != members.end() ? &found->value : nullptr;
}

void Json::store(std::string_view key, Json value) {
  for (Member& member : members) {
    if (member.key == key) {
      member.value = std::move(value);
      return;
    }
  }
  members.push_back({std::string(key), std::move(value)});
}

std::optional<Json> parseJson(std::string_view text) {
  Json json;
  if (!Reader(text).document(json)) return std::nullopt;
  return json;
}

}  // namespace Vastel_Connect::reference

// Activation tokens, and the names that go into unit names.
#include "fuzz/Fuzz.h"
#include "platform/linux/ActivationToken.h"
#include "platform/linux/Scope.h"

using namespace Vastel_Connect;

namespace {

bool isToken(std::string_view text) {
  std::size_t printable = 0;
  for (const char c : text) {
    for (int code = 0x21; code <= 0x7E; ++code) {
      if (c == static_cast<char>(code)) ++printable;
    }
  }
  return printable == text.size() && printable >= 1 && printable <= 1024;
}

/// The text that an escaped name stands for.
std::string unescaped(std::string_view name) {
  std::string text;
  while (!name.empty()) {
    const bool escape = name.substr(0, 2) == "\\x";
    text += escape ? static_cast<char>(std::stoi(std::string(name.substr(2, 2)), nullptr, 16))
                   : name[0];
    name.remove_prefix(escape ? 4 : 1);
  }
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(fuzz::textOf(data, size));
  const auto token = tokenText(text);
  fuzz::expect(token.has_value() == isToken(text) && token.value_or(text) == text, "tokenText");

  const std::string name = scopeName(7, text);
  const std::string before = "app-vastel\\x2dconnect-";
  fuzz::expect(name.starts_with(before) && name.ends_with("-7.scope"), "scopeName");
  const auto middle = std::string_view(name).substr(before.size(), name.size() - before.size() - 8);
  constexpr std::string_view kAllowed =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789:_.\\";
  fuzz::expect(middle.find_first_not_of(kAllowed) == middle.npos, "a unit name's characters");
  fuzz::expect(unescaped(middle) == text, "a unit name's application");
  return 0;
}

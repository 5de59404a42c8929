#include "api/ScreenPopApi.h"

#include <array>
#include <cstdlib>

#include "json/JsonText.h"
#include "json/KeyPath.h"

namespace Vastel_Connect {
namespace {

/// Ends the process at once, without a core dump. Its exit status is EX_SOFTWARE of <sysexits.h>.
[[noreturn]] void stopProgram() {
  std::_Exit(70);
}

std::optional<std::string> textMember(const JSON& request, std::string_view key) {
  const JsonValue* value = valueForKeyPath(request, key);
  const auto* text = value != nullptr ? value->if_string() : nullptr;
  if (text == nullptr) return std::nullopt;
  return std::string(*text);
}

std::optional<struct_PartialScreenPopApi::Texts> textsMember(const JSON& request,
                                                             std::string_view key) {
  const JsonValue* value = valueForKeyPath(request, key);
  const JSON* dictionary = value != nullptr ? value->if_object() : nullptr;
  if (dictionary == nullptr) return std::nullopt;
  struct_PartialScreenPopApi::Texts texts;
  for (const auto& [name, entry] : *dictionary) {
    const auto* text = entry.if_string();
    if (text == nullptr) return std::nullopt;
    texts.emplace(name, *text);
  }
  return texts;
}

std::optional<ScreenPopScriptType> scriptTypeMember(const JSON& request, std::string_view key) {
  const auto raw = textMember(request, key);
  return raw ? initRawValue<ScreenPopScriptType>(*raw) : std::nullopt;
}

}  // namespace

struct_PartialScreenPopApi struct_PartialScreenPopApi::fromJsonText(std::string_view jsonText) {
  // The document is read once and dropped whole, so its parts are never freed one by one.
  std::array<unsigned char, 4096> buffer;  // NOLINT(cppcoreguidelines-init-variables)
  boost::json::monotonic_resource storage(buffer.data(), buffer.size());
  const auto document = parseJsonText(jsonText, &storage);
  if (!document) return {};
  const JSON* request = document->if_object();
  // On purpose: a request that is an array ends the program here rather than being ignored.
  if (request == nullptr) stopProgram();

  return {
      .ScriptType = scriptTypeMember(*request, "ScriptType"),
      .CallFields = textsMember(*request, "CallFields"),
      .RecognitionFields = textsMember(*request, "RecognitionFields"),
      .CSDFileName = textMember(*request, "CSDFileName"),
      .CSDParams = textsMember(*request, "CSDParams"),
      .WebPage = textMember(*request, "WebPage"),
  };
}

}  // namespace Vastel_Connect

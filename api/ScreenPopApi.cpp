#include "api/ScreenPopApi.h"

#include "json/JsonText.h"
#include "json/KeyPath.h"
#include "platform/Platform.h"

namespace Vastel_Connect {
namespace {

/// The value of a key if it is of type T, else absent.
template <typename T>
std::optional<T> member(const JSON& request, std::string_view key) {
  const JsonValue* value = valueForKeyPath(request, key);
  return value != nullptr ? valueOf<T>(*value) : std::nullopt;
}

std::optional<ScreenPopScriptType> scriptTypeMember(const JSON& request, std::string_view key) {
  const auto raw = member<std::string>(request, key);
  return raw ? initRawValue<ScreenPopScriptType>(*raw) : std::nullopt;
}

}  // namespace

struct_PartialScreenPopApi struct_PartialScreenPopApi::fromJsonText(std::string_view jsonText) {
  // The document is read once and dropped whole, so its parts are never freed one by one.
  boost::json::monotonic_resource storage;
  const auto document = parseJsonText(jsonText, &storage);
  if (!document) return {};
  const JSON* request = document->if_object();
  // On purpose: no client that works sends an array, and whoever looks after it relies on the
  // program's end to notice. A log line could go unread.
  if (request == nullptr) platform::stopProgram();

  return {
      .ScriptType = scriptTypeMember(*request, "ScriptType"),
      .CallFields = member<Fields>(*request, "CallFields"),
      .RecognitionFields = member<Fields>(*request, "RecognitionFields"),
      .CSDFileName = member<std::string>(*request, "CSDFileName"),
      .CSDParams = member<Fields>(*request, "CSDParams"),
      .WebPage = member<std::string>(*request, "WebPage"),
  };
}

}  // namespace Vastel_Connect

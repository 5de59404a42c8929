#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "json/RawValue.h"
#include "json/ValueOf.h"

namespace Vastel_Connect {

/// What the web client's own script does. It is decoded only: no case of it causes an action.
enum class ScreenPopScriptType { CSD, OpenApplication, OpenWebPage };

/// The texts that stand for the cases in a request, compared byte for byte.
template <>
struct RawValues<ScreenPopScriptType> {
  static constexpr std::pair<ScreenPopScriptType, std::string_view> rows[] = {
      {ScreenPopScriptType::CSD, "CSD"},
      {ScreenPopScriptType::OpenApplication, "OpenApplication"},
      {ScreenPopScriptType::OpenWebPage, "OpenWebPage"},
  };
};

/// A screen-pop request. Its JSON keys are its members' names. A member is absent when its key is
/// missing or holds a value of another type; none depends on another, and other keys are dropped.
struct struct_PartialScreenPopApi {
  /// Texts by keys of the client's choice, both kept as sent.
  using Fields = Dictionary<std::string>;

  std::optional<ScreenPopScriptType> ScriptType;
  std::optional<Fields> CallFields;
  std::optional<Fields> RecognitionFields;
  std::optional<std::string> CSDFileName;
  std::optional<Fields> CSDParams;
  std::optional<std::string> WebPage;

  /// Reads a request from JSON text. Text that is not a JSON object or array gives a record without
  /// any member. A top-level array ends the process with status 70. Any thread.
  [[nodiscard]] static struct_PartialScreenPopApi fromJsonText(std::string_view jsonText);

  bool operator==(const struct_PartialScreenPopApi&) const = default;
};

}  // namespace Vastel_Connect

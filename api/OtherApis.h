#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace Vastel_Connect {

// Further records of the interface that the web client and its desktop applications share. They are
// here for that interface alone: this application uses none of them.

/// An error report.
struct struct_ErrorApi {
  explicit struct_ErrorApi(std::string message) : Message(std::move(message)) {}

  std::string Message;
};

/// A log report.
struct struct_LogApi {
  explicit struct_LogApi(std::string message) : Message(std::move(message)) {}

  std::string Message;
};

/// A request to call a number.
struct struct_MakeCallApi {
  std::optional<std::string> Number;
};

/// A hot-key definition. The meaning of `VirtualKey` and the unit of `ReadDelay` are the client's.
struct struct_SetHotKeyApi {
  std::optional<std::string> Command;
  bool ModifierAlt = false;
  bool ModifierCommand = false;
  bool ModifierCtrl = false;
  bool ModifierShift = false;
  std::uint16_t VirtualKey = 0;
  std::uint16_t ReadDelay = 0;
};

/// Whether a hot key could be set, and if not, why.
struct struct_HotKeyStateApi {
  bool Result = false;
  std::optional<std::string> FailReason;
};

}  // namespace Vastel_Connect

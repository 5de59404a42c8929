#pragma once

#include <systemd/sd-bus.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace Vastel_Connect {

/// What is said of a bus that keeps the program waiting.
inline constexpr std::string_view kBusIsBusy = "the session bus does not answer yet";

/// What is said where there is none.
inline constexpr std::string_view kNoBus = "no session bus, so no link can arrive";

/// How a wait for the bus ended.
enum class Waited {
  /// What was waited for is there.
  Done,
  /// The connection failed, or has ended.
  BusGone,
  /// The program is to end.
  Ending,
};

/// Lets the bus go on, callbacks included, until `isDone`. After three seconds without a message,
/// `complaint` is said on standard error, once; an empty one never is.
[[nodiscard]] Waited waitForBus(const std::function<bool()>& isDone, std::string_view complaint);

/// Lets the bus go on until `isDone` though the program is to end: for as long as no second passes
/// without a message.
void waitForBusAtTheEnd(const std::function<bool()>& isDone);

struct MessageUnref {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, MessageUnref>;

struct SlotUnref {
  void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
};
using Slot = std::unique_ptr<sd_bus_slot, SlotUnref>;

/// What became of a call.
struct Answer {
  Waited waited = Waited::Done;
  /// Null when there is none, also where the call could not be sent.
  Message message;

  /// The name of the error that came in place of an answer; empty where none did.
  [[nodiscard]] std::string errorName() const;
  /// What the error says, in printable ASCII: whoever has a name on the bus may say anything.
  [[nodiscard]] std::string errorText() const;
  /// The text that is all of the answer; empty where there is none.
  [[nodiscard]] std::string text() const;
};

/// Sends a call and waits for its answer as waitForBus does, without a limit of time.
[[nodiscard]] Answer callBus(const Message& call, std::string_view complaint);

/// A call of a method of the bus itself, without its arguments. Null when there is no memory.
[[nodiscard]] Message makeDriverCall(const char* method);

/// Calls a method of the bus itself whose argument is the name of a connection.
[[nodiscard]] Answer askBusAbout(const char* method, const std::string& name);

/// A callback: keeps the first message that comes in the Message that is its userdata.
int keepMessage(sd_bus_message* message, void* userdata, sd_bus_error* error);

}  // namespace Vastel_Connect

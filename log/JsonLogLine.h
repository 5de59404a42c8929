#pragma once

#include <string>
#include <string_view>

namespace Vastel_Connect {

/// `message` as one compact JSON object of the text members "datetime", "event" and "message", in
/// that order and without a line end. The date is now, with the local zone's offset (+0100). A
/// message that is not valid UTF-8 cannot stand in JSON: its record says so instead. Any thread.
[[nodiscard]] std::string makeJsonLogLine(std::string_view message);

}  // namespace Vastel_Connect

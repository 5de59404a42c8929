#include "log/JsonLogLine.h"

#include "json/JsonText.h"
#include "platform/Platform.h"

namespace Vastel_Connect {

std::string makeJsonLogLine(std::string_view message) {
  const std::string dateTime = platform::jsonLogDate();
  const auto line = writeJsonText({{"datetime", dateTime}, {"event", "Log"}, {"message", message}});
  return line ? *line
              : R"({"datetime":")" + dateTime +
                    R"(","event":"Log","message":"error while serializing [log]"})";
}

}  // namespace Vastel_Connect

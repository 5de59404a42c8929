#include "log/JsonLogLine.h"

#include "json/JsonText.h"
#include "platform/Platform.h"
#include "text/Utf8.h"

namespace Vastel_Connect {

std::string makeJsonLogLine(std::string_view message) {
  const std::string dateTime = platform::currentDateText("yyyy-MM-dd'T'HH:mm:ssZ");
  const auto line = writeJsonText({{"datetime", dateTime}, {"event", "Log"}, {"message", message}});
  return line ? *line
              : R"({"datetime":")" + dateTime +
                    R"(","event":"Log","message":"error while serializing [log]"})";
}

}  // namespace Vastel_Connect

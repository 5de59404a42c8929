#include "log/JsonLogLine.h"

#include <utf8.h>

#include "json/JsonText.h"
#include "platform/Platform.h"

namespace Vastel_Connect {

std::string makeJsonLogLine(std::string_view message) {
  const std::string dateTime = platform::currentDateText("yyyy-MM-dd'T'HH:mm:ssZ");
  if (!utf8::is_valid(message.begin(), message.end())) {
    return R"({"datetime":")" + dateTime +
           R"(","event":"Log","message":"error while serializing [log]"})";
  }
  return writeJsonText({{"datetime", dateTime}, {"event", "Log"}, {"message", message}});
}

}  // namespace Vastel_Connect

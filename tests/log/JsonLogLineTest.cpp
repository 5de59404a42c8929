// Tests log/JsonLogLine.h.
#include "log/JsonLogLine.h"

#include <gtest/gtest.h>

#include <boost/json.hpp>

#include "tests/platform/RecordingHost.h"

namespace Vastel_Connect {
namespace {

using MakeJsonLogLine = WithRecordingHost<testing::Test>;

TEST_F(MakeJsonLogLine, StaysOneLineWhateverTheMessageHolds) {
  const std::string_view messages[] = {
      "quotes \" and \\ back-slashes", "line\nfeeds\r\n",           "caf\xC3\xA9 \xF0\x9F\x98\x80",
      "\x1B[2J escape \x07\x7F",       std::string_view("a\0b", 3), "",
  };
  for (const std::string_view message : messages) {
    const std::string line = makeJsonLogLine(message);
    for (const char c : line) EXPECT_GE(static_cast<unsigned char>(c), ' ') << line;
    EXPECT_EQ(std::string_view(boost::json::parse(line).at("message").as_string()), message);
  }
}

TEST_F(MakeJsonLogLine, FallsBackForAMessageThatJsonCannotHold) {
  for (const std::string_view message : {"\xFF", "a\xC3", "\xED\xA0\x80"}) {
    EXPECT_EQ(makeJsonLogLine(message), R"({"datetime":"2018-03-05T14:07:09+0100","event":"Log",)"
                                        R"("message":"error while serializing [log]"})");
  }
}

}  // namespace
}  // namespace Vastel_Connect

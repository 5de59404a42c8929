// Tests AppDelegate::processUri.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/platform/Base64Text.h"
#include "tests/platform/RecordingHost.h"

namespace Vastel_Connect {
namespace {

using testing::ElementsAre;

using Lines = std::vector<std::string>;

const std::string kPage = R"({"WebPage":"https://crm.example/48213"})";
const Lines kOpensPage = {"process screenpop", "webpage: https://crm.example/48213",
                          "open: https://crm.example/48213"};

class ProcessUri : public WithRecordingHost<testing::Test> {
 protected:
  ProcessUri() { delegate.FlagLog = true; }

  /// What the host is asked for behind the line that repeats the link, without the lines' times.
  Lines process(const std::string& uri) {
    constexpr std::string_view kTime = "print: Log 14:07:09> ";
    host.reset();
    delegate.processUri(uri);
    Lines events = host.events();
    for (std::string& event : events) {
      if (event.starts_with(kTime)) event.erase(0, kTime.size());
    }
    EXPECT_EQ(events.at(0), "process uri: " + uri);
    events.erase(events.begin());
    return events;
  }

  AppDelegate delegate;
};

TEST_F(ProcessUri, TakesTheProtocolInAnyCaseWithOrWithoutSlashes) {
  for (const std::string start : {"screenpop:", "screenpop://", "SCREENPOP:", "sCREENPOp://"}) {
    EXPECT_EQ(process(start + base64Text(kPage)), kOpensPage) << start;
  }
}

TEST_F(ProcessUri, LogsThePageOfARecordAndOpensItAsItStandsIfItIsAUrlWithAScheme) {
  const std::pair<const char*, Lines> rows[] = {
      {R"({"ScriptType":"CSD","WebPage":"https://h/"})",
       {"webpage: https://h/", "open: https://h/"}},
      {R"({"ScriptType":"OpenApplication","WebPage":"tel:#1"})",
       {"webpage: tel:#1", "open: tel:#1"}},
      {R"({"ScriptType":"OpenWebPage"})", {"no webpage to open"}},
      {"x", {"no webpage to open"}},
      {R"({"WebPage":""})", {"webpage: "}},
      {R"({"WebPage":"/etc/passwd"})", {"webpage: /etc/passwd"}},
      {R"({"WebPage":"--help"})", {"webpage: --help"}},
      {R"({"WebPage":"http://h/a b"})", {"webpage: http://h/a b"}},
      {R"({"WebPage":"http://h/\u0000"})", {std::string("webpage: http://h/\0", 19)}},
  };
  for (auto [json, lines] : rows) {
    lines.insert(lines.begin(), "process screenpop");
    EXPECT_EQ(process("screenpop:" + base64Text(json)), lines) << json;
  }
}

TEST_F(ProcessUri, TellsNoProtocolFromAnotherProtocol) {
  for (const char* uri : {"screenpop", ""}) {
    EXPECT_THAT(process(uri), ElementsAre("invalid protocol"));
  }
  // The last three have a long s, a Cyrillic o, and a fullwidth letter.
  for (const char* uri : {"mailto:x@y.example", ":e30=", "screenpop2:e30=", " screenpop:e30=",
                          "screenpop :e30=", "xscreenpop:e30=", "screenpo:e30=",
                          "\u017Fcreenpop:e30=", "screenp\u043Ep:e30=", "\uFF53creenpop:e30="}) {
    EXPECT_THAT(process(uri), ElementsAre("Invalid protocol"));
  }
}

TEST_F(ProcessUri, CannotDecodeABadCommand) {
  for (const char* uri :
       {"screenpop://", "screenpop:", "screenpop://e30", "screenpop://e30%3D",
        "screenpop:///w==", "screenpop:/w==", "screenpop:e30=\n", "screenpop: e30=",
        "screenpop:////e30=", "screenpop:::e30=", "screenpop://://e30=", "screenpop:\xCC\x81"}) {
    EXPECT_THAT(process(uri), ElementsAre("process screenpop", "Could not decode"));
  }
}

TEST_F(ProcessUri, DoesTheSameSilentlyWithLoggingOff) {
  delegate.FlagLog = false;
  for (const std::string& uri : {"screenpop:" + base64Text(kPage), std::string("screenpop"),
                                 std::string("mailto:x"), std::string("screenpop:e30=")}) {
    delegate.processUri(uri);
  }
  EXPECT_THAT(host.events(), ElementsAre("open: https://crm.example/48213"));
}

using ProcessUriDeathTest = ProcessUri;

TEST_F(ProcessUriDeathTest, StopsOnARequestThatIsAnArray) {
  EXPECT_EXIT(delegate.processUri("screenpop:W10="), testing::ExitedWithCode(70), "^$");
}

}  // namespace
}  // namespace Vastel_Connect

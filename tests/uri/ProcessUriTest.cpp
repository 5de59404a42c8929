// Tests AppDelegate::processUri.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/platform/RecordingHost.h"

namespace Vastel_Connect {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The base64 of the record that each name tells of.
constexpr const char* kPage = "eyJXZWJQYWdlIjoiaHR0cHM6Ly9jcm0uZXhhbXBsZS80ODIxMyJ9";
constexpr const char* kPageAndCsd =
    "eyJTY3JpcHRUeXBlIjoiQ1NEIiwiV2ViUGFnZSI6Imh0dHBzOi8vY3JtLmV4YW1wbGUvNDgyMTMifQ==";
constexpr const char* kPageAndOpenApplication =
    "eyJTY3JpcHRUeXBlIjoiT3BlbkFwcGxpY2F0aW9uIiwiV2ViUGFnZSI6Imh0dHBzOi8vY3JtLmV4YW1wbGUvNDgyMTMif"
    "Q==";
constexpr const char* kOpenWebPageWithoutPage = "eyJTY3JpcHRUeXBlIjoiT3BlbldlYlBhZ2UifQ==";
constexpr const char* kNumberForPage = "eyJXZWJQYWdlIjo1fQ==";
constexpr const char* kObjectForPage = "eyJXZWJQYWdlIjp7fX0=";
constexpr const char* kEmptyPage = "eyJXZWJQYWdlIjoiIn0=";
constexpr const char* kPathForPage = "eyJXZWJQYWdlIjoiL2V0Yy9wYXNzd2QifQ==";
constexpr const char* kOptionForPage = "eyJXZWJQYWdlIjoiLS1oZWxwIn0=";
constexpr const char* kPageWithBlank = "eyJXZWJQYWdlIjoiaHR0cDovL2gvYSBiIn0=";
constexpr const char* kPageWithNul = "eyJXZWJQYWdlIjoiaHR0cDovL2gvXHUwMDAwIn0=";

class ProcessUri : public WithRecordingHost<testing::Test> {
 protected:
  /// What the host was asked for, without the times of the log lines.
  std::vector<std::string> process(const std::string& uri) {
    host.reset();
    delegate.processUri(uri);
    std::vector<std::string> events = host.events();
    for (std::string& event : events) {
      if (event.starts_with("print: Log 14:07:09> ")) event.erase(0, 21);
    }
    return events;
  }

  AppDelegate delegate;
};

class ProcessUriLogging : public ProcessUri {
 protected:
  ProcessUriLogging() { delegate.FlagLog = true; }
};

TEST_F(ProcessUriLogging, OpensThePageAndLogsThreeLines) {
  for (const std::string separator : {"://", ":"}) {
    const std::string uri = "screenpop" + separator + kPage;
    EXPECT_THAT(process(uri), ElementsAre("process uri: " + uri, "process screenpop",
                                          "webpage: https://crm.example/48213",
                                          "open: https://crm.example/48213"));
  }
}

TEST_F(ProcessUriLogging, OpensThePageWhateverTheScriptType) {
  for (const char* command : {kPageAndCsd, kPageAndOpenApplication}) {
    const std::string uri = std::string("screenpop://") + command;
    EXPECT_THAT(process(uri), ElementsAre("process uri: " + uri, "process screenpop",
                                          "webpage: https://crm.example/48213",
                                          "open: https://crm.example/48213"));
  }
}

TEST_F(ProcessUriLogging, OpensNothingWithoutAPage) {
  for (const char* command : {kOpenWebPageWithoutPage, kNumberForPage, kObjectForPage,
                              /* {} */ "e30=", /* not JSON */ "eA==", /* "x" */ "Ingi"}) {
    const std::string uri = std::string("screenpop:") + command;
    EXPECT_THAT(process(uri),
                ElementsAre("process uri: " + uri, "process screenpop", "no webpage to open"));
  }
}

TEST_F(ProcessUriLogging, TellsNoProtocolFromAnotherProtocol) {
  EXPECT_THAT(process("screenpop"), ElementsAre("process uri: screenpop", "invalid protocol"));
  EXPECT_THAT(process(""), ElementsAre("process uri: ", "invalid protocol"));
  for (const std::string uri : {"mailto:x@y.example", ":e30=", "screenpop2:e30=", " screenpop:e30=",
                                "screenpop :e30=", "xscreenpop:e30=", "screenpo:e30="}) {
    EXPECT_THAT(process(uri), ElementsAre("process uri: " + uri, "Invalid protocol"));
  }
}

TEST_F(ProcessUriLogging, TakesTheProtocolInAnyCase) {
  for (const std::string protocol : {"SCREENPOP", "ScreenPop", "sCREENPOp"}) {
    const std::string uri = protocol + "://" + kPage;
    EXPECT_THAT(process(uri), ElementsAre("process uri: " + uri, "process screenpop",
                                          "webpage: https://crm.example/48213",
                                          "open: https://crm.example/48213"));
  }
}

TEST_F(ProcessUriLogging, TakesNoLetterThatOnlyLooksOrFoldsLikeAnother) {
  // A long s, a Cyrillic o, and fullwidth letters.
  for (const std::string protocol : {"\xC5\xBF"
                                     "creenpop",
                                     "screenp\xD0\xBEp",
                                     "\xEF\xBD\x93"
                                     "creenpop"}) {
    const std::string uri = protocol + ":e30=";
    EXPECT_THAT(process(uri), ElementsAre("process uri: " + uri, "Invalid protocol"));
  }
}

TEST_F(ProcessUriLogging, CannotDecodeABadCommand) {
  for (const std::string uri :
       {"screenpop://", "screenpop:", "screenpop://e30", "screenpop://e30%3D",
        "screenpop:///w==", "screenpop:/w==", "screenpop:e30=\n"}) {
    EXPECT_THAT(process(uri),
                ElementsAre("process uri: " + uri, "process screenpop", "Could not decode"));
  }
}

TEST_F(ProcessUriLogging, LogsAPageWithoutASchemeAndOpensNothing) {
  const struct {
    const char* command;
    std::string page;
  } rows[] = {{kEmptyPage, ""}, {kPathForPage, "/etc/passwd"}, {kOptionForPage, "--help"}};
  for (const auto& [command, page] : rows) {
    const std::string uri = std::string("screenpop:") + command;
    EXPECT_THAT(process(uri),
                ElementsAre("process uri: " + uri, "process screenpop", "webpage: " + page));
  }
}

TEST_F(ProcessUriLogging, HandsThePageOverAsItStands) {
  const std::string uri = "screenpop:eyJXZWJQYWdlIjoidGVsOiMxMjM0In0=";
  EXPECT_THAT(process(uri), ElementsAre("process uri: " + uri, "process screenpop",
                                        "webpage: tel:#1234", "open: tel:#1234"));
}

TEST_F(ProcessUriLogging, DropsAPageThatFormsNoUrl) {
  EXPECT_THAT(process(std::string("screenpop:") + kPageWithBlank),
              ElementsAre(std::string("process uri: screenpop:") + kPageWithBlank,
                          "process screenpop", "webpage: http://h/a b"));
  EXPECT_THAT(process(std::string("screenpop:") + kPageWithNul),
              ElementsAre(std::string("process uri: screenpop:") + kPageWithNul,
                          "process screenpop", std::string("webpage: http://h/\0", 19)));
}

TEST_F(ProcessUriLogging, LogsNothingWhenAPageCannotBeOpened) {
  host.reset();
  host.opens = false;
  delegate.processUri(std::string("screenpop:") + kPage);
  EXPECT_EQ(host.events().back(), "open: https://crm.example/48213");
}

TEST_F(ProcessUri, DoesTheSameSilentlyWithLoggingOff) {
  EXPECT_THAT(process(std::string("screenpop://") + kPage),
              ElementsAre("open: https://crm.example/48213"));
  EXPECT_THAT(process("screenpop"), IsEmpty());
  EXPECT_THAT(process("mailto:x"), IsEmpty());
  EXPECT_THAT(process("screenpop:"), IsEmpty());
  EXPECT_THAT(process("screenpop:e30="), IsEmpty());
}

TEST_F(ProcessUriLogging, KeepsNothingFromOneUriToTheNext) {
  process(std::string("screenpop://") + kPage);
  EXPECT_THAT(
      process("screenpop:e30="),
      ElementsAre("process uri: screenpop:e30=", "process screenpop", "no webpage to open"));
}

using ProcessUriDeathTest = ProcessUriLogging;

TEST_F(ProcessUriDeathTest, StopsOnARequestThatIsAnArray) {
  EXPECT_EXIT(delegate.processUri("screenpop:W10="), testing::ExitedWithCode(70), "^$");
}

}  // namespace
}  // namespace Vastel_Connect

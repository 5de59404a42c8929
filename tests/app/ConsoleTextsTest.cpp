// Tests app/ConsoleTexts.h.
#include "app/ConsoleTexts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/json.hpp>

#include "api/ScreenPopApi.h"
#include "tests/platform/Data.h"
#include "tests/platform/RecordingHost.h"
#include "uri/UriPreProcessor.h"

namespace Vastel_Connect {
namespace {

using testing::ElementsAre;

class ConsoleTexts : public WithRecordingHost<testing::Test> {
 protected:
  [[nodiscard]] std::string output() const {
    std::string text;
    for (const std::string& event : host.events()) {
      text += event.substr(std::string("print: ").size()) + "\n";
    }
    return text;
  }
};

/// The JSON text of the example link.
std::string exampleRecord() {
  const std::string_view start = "  screenpop://";
  const std::string_view example = UriApiText.substr(UriApiText.find(start) + 2);
  struct_UriPreProcessor preProcessor;
  preProcessor.parseUri(example.substr(0, example.find('\n')));
  preProcessor.decodeCommand();
  return preProcessor.DecodedCommand.value_or("");
}

std::vector<std::string> keys(const boost::json::value& object) {
  std::vector<std::string> result;
  for (const auto& member : object.as_object()) result.emplace_back(member.key());
  return result;
}

TEST_F(ConsoleTexts, AreAsTheyWereWritten) {
  printBanner();
  EXPECT_EQ(output(), readData("banner.txt"));
  host.reset();
  printUsage();
  EXPECT_EQ(output(), readData("usage.txt"));
  host.reset();
  printChangeLog();
  EXPECT_EQ(output(), readData("changelog.txt"));
  EXPECT_EQ(std::string(UriApiText) + "\n", readData("showuri.txt"));
}

TEST_F(ConsoleTexts, HaveAnExampleWithAllKeysInOrder) {
  const auto record = boost::json::parse(exampleRecord());
  EXPECT_THAT(keys(record),
              ElementsAre("SubHeader", "ScriptType", "XmlFile", "CSDFileName", "CSDParams",
                          "Keystrokes", "RecognitionFields", "CallFields", "AutoExecute"));
  EXPECT_THAT(keys(record.at("CSDParams")), ElementsAre("Owner", "ServerId", "AuthorizationKey"));
  EXPECT_THAT(keys(record.at("CallFields")),
              ElementsAre("Caller number", "Caller name", "Device number", "Device name",
                          "Ddi number", "Ddi name", "Start time"));
  EXPECT_EQ(boost::json::serialize(record), exampleRecord()) << "compact";
}

TEST_F(ConsoleTexts, HaveAnExampleThatTheRecordReads) {
  const auto request = struct_PartialScreenPopApi::fromJsonText(exampleRecord());
  EXPECT_TRUE(request.ScriptType && request.CallFields && request.RecognitionFields &&
              request.CSDFileName && request.CSDParams);
}

}  // namespace
}  // namespace Vastel_Connect

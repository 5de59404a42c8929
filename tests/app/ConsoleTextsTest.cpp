// Tests app/ConsoleTexts.h.
#include "app/ConsoleTexts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <utf8.h>

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
  [[nodiscard]] std::vector<std::string> lines() const {
    std::vector<std::string> result;
    for (const std::string& event : host.events()) {
      result.push_back(event.substr(std::string("print: ").size()));
    }
    return result;
  }

  [[nodiscard]] std::string output() const {
    std::string text;
    for (const std::string& line : lines()) text += line + "\n";
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

TEST_F(ConsoleTexts, HaveTheirNumbersOfLines) {
  printBanner();
  EXPECT_EQ(lines().size(), 8U);
  host.reset();
  printUsage();
  EXPECT_EQ(lines().size(), 6U);
  host.reset();
  printChangeLog();
  EXPECT_EQ(lines().size(), 33U);
}

TEST_F(ConsoleTexts, AllEndWithAnEmptyLine) {
  for (const auto print : {printBanner, printUsage, printChangeLog}) {
    host.reset();
    print();
    EXPECT_EQ(lines().back(), "");
  }
  EXPECT_TRUE(UriApiText.ends_with("\n"));
}

TEST_F(ConsoleTexts, KeepTheMisspellingOfTheChangeLog) {
  printChangeLog();
  EXPECT_EQ(lines()[4], "  Project split form Lintmoor.app.");
}

TEST_F(ConsoleTexts, HaveABannerOfTheRightWidths) {
  printBanner();
  std::vector<std::ptrdiff_t> widths;
  for (const std::string& line : lines()) {
    widths.push_back(utf8::distance(line.begin(), line.end()));
  }
  EXPECT_THAT(widths, ElementsAre(51, 52, 52, 52, 52, 52, 52, 0));
}

TEST_F(ConsoleTexts, HaveOneCharacterOutsideAsciiInTheNotice) {
  printBanner();
  const std::string notice = lines()[6];
  EXPECT_TRUE(notice.starts_with(std::string(32, ' ') + "\xC2\xA9"));
  EXPECT_NE(notice.find("Vastel"), notice.npos);
  int outsideAscii = 0;
  for (const char c : output()) outsideAscii += static_cast<unsigned char>(c) > 127 ? 1 : 0;
  EXPECT_EQ(outsideAscii, 2) << "two bytes, one character";
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
  EXPECT_EQ(request.CallFields->size(), 7U);
}

}  // namespace
}  // namespace Vastel_Connect

// Tests uri/UriPreProcessor.h.
#include "uri/UriPreProcessor.h"

#include <gtest/gtest.h>

namespace Vastel_Connect {
namespace {

std::string render(const std::optional<std::string>& text) {
  return text ? "\"" + *text + "\"" : "-";
}

/// The members after parseUri and decodeCommand, as one text.
std::string preProcess(std::string_view uri) {
  struct_UriPreProcessor preProcessor;
  preProcessor.parseUri(uri);
  preProcessor.decodeCommand();
  return render(preProcessor.UriProtocol) + " " + render(preProcessor.RawCommand) + " " +
         render(preProcessor.DecodedCommand);
}

std::optional<std::string> decodeCommand(std::optional<std::string> rawCommand) {
  struct_UriPreProcessor preProcessor{.RawCommand = std::move(rawCommand)};
  preProcessor.decodeCommand();
  return preProcessor.DecodedCommand;
}

TEST(UriPreProcessor, StartsWithAllMembersAbsent) {
  const struct_UriPreProcessor preProcessor;
  EXPECT_FALSE(preProcessor.UriProtocol || preProcessor.RawCommand || preProcessor.DecodedCommand);
}

TEST(ParseUri, SplitsAtTheFirstColon) {
  const struct {
    const char* uri;
    const char* members;
  } rows[] = {
      {"screenpop://eyJhIjoxfQ==", R"("screenpop" "eyJhIjoxfQ==" "{"a":1}")"},
      {"screenpop:eyJhIjoxfQ==", R"("screenpop" "eyJhIjoxfQ==" "{"a":1}")"},
      {"screenpop:///x", R"("screenpop" "/x" -)"},
      {"screenpop:////eyJhIjoxfQ==", R"("screenpop" "//eyJhIjoxfQ==" -)"},
      {"screenpop:/x", R"("screenpop" "/x" -)"},
      {"screenpop:::x", R"("screenpop" "::x" -)"},
      {"screenpop://://x", R"("screenpop" "://x" -)"},
      {"screenpop://a:b", R"("screenpop" "a:b" -)"},
      {"a:b:c", R"("a" "b:c" -)"},
      {":abc", R"("" "abc" -)"},
      {"://", R"("" "" -)"},
      {" screenpop :x ", R"(" screenpop " "x " -)"},
      {"mailto:x@y.example?a=%3D#b", R"("mailto" "x@y.example?a=%3D#b" -)"},
  };
  for (const auto& [uri, members] : rows) {
    EXPECT_EQ(preProcess(uri), members) << uri;
  }
}

TEST(ParseUri, LeavesAllMembersAbsentWithoutAColon) {
  EXPECT_EQ(preProcess("screenpop"), "- - -");
  EXPECT_EQ(preProcess(""), "- - -");
}

TEST(ParseUri, GivesAnEmptyCommandBehindTheSeparator) {
  EXPECT_EQ(preProcess("screenpop://"), R"("screenpop" "" -)");
  EXPECT_EQ(preProcess("screenpop:"), R"("screenpop" "" -)");
}

TEST(ParseUri, KeepsProtocolCase) {
  EXPECT_EQ(preProcess("SCREENPOP://x"), R"("SCREENPOP" "x" -)");
  EXPECT_EQ(preProcess("ScreenPop://x"), R"("ScreenPop" "x" -)");
}

TEST(ParseUri, TakesAColonBeforeACombiningMark) {
  EXPECT_EQ(preProcess("a:\xCC\x81"), "\"a\" \"\xCC\x81\" -");
}

TEST(DecodeCommand, DoesNothingWithoutACommand) {
  EXPECT_FALSE(decodeCommand(std::nullopt));
  EXPECT_FALSE(decodeCommand(""));
}

TEST(DecodeCommand, RejectsWhatIsNoStrictBase64) {
  for (const char* command : {"e30=\n", " e30=", "e30", "eyJhIjoxfQ=", "e30%3D", "_-8="}) {
    EXPECT_FALSE(decodeCommand(command)) << command;
  }
}

TEST(DecodeCommand, RejectsBytesThatAreNotUtf8) {
  EXPECT_FALSE(decodeCommand("/w=="));
  EXPECT_EQ(decodeCommand("AA=="), std::string(1, '\0'));
}

}  // namespace
}  // namespace Vastel_Connect

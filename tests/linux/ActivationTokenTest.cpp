// Tests platform/linux/ActivationToken.h.
#include "platform/linux/ActivationToken.h"

#include <gtest/gtest.h>

#include "tests/linux/PrivateFolder.h"

namespace Vastel_Connect {
namespace {

TEST(TokenText, IsPrintableAscii) {
  for (const std::string text : {"a", "!", "~", "gnome-shell/app/1-2_TIME3", "a=b;c\\d'\"$(e)"}) {
    EXPECT_EQ(tokenText(text), text);
  }
}

TEST(TokenText, IsNothingElse) {
  for (const std::string_view text :
       {"", " ", "a b", "a\n", "\ta", "a\x7f", "\x1b[0m", "\xc3\xbc"}) {
    EXPECT_EQ(tokenText(text), std::nullopt) << text;
  }
  EXPECT_EQ(tokenText(std::string_view("a\0b", 3)), std::nullopt);
}

TEST(TokenText, HasALimit) {
  const std::string longest(kTokenLengthLimit, 'x');
  EXPECT_EQ(tokenText(longest), longest);
  EXPECT_EQ(tokenText(longest + "x"), std::nullopt);
}

class TokenOfTheEnvironment : public testing::Test {
 protected:
  ActivationToken take(const std::optional<std::string>& activationToken,
                       const std::optional<std::string>& startupId) {
    environment_.set("XDG_ACTIVATION_TOKEN", activationToken);
    environment_.set("DESKTOP_STARTUP_ID", startupId);
    return takeActivationTokenFromEnvironment();
  }

 private:
  ScopedEnvironment environment_;
};

TEST_F(TokenOfTheEnvironment, IsTaken) {
  const ActivationToken token = take("token", "id_TIME1");
  EXPECT_EQ(token.activationToken, "token");
  EXPECT_EQ(token.startupId, "id_TIME1");
}

TEST_F(TokenOfTheEnvironment, IsNotLeftThere) {
  for (const char* text : {"token", "not a token", ""}) {
    static_cast<void>(take(text, text));
    EXPECT_EQ(std::getenv("XDG_ACTIVATION_TOKEN"), nullptr) << text;
    EXPECT_EQ(std::getenv("DESKTOP_STARTUP_ID"), nullptr) << text;
  }
}

TEST_F(TokenOfTheEnvironment, IsAbsentWhereItIsNotSetOrNoToken) {
  EXPECT_EQ(take(std::nullopt, "id").activationToken, std::nullopt);
  EXPECT_EQ(take("token", std::nullopt).startupId, std::nullopt);
  EXPECT_EQ(take("to ken", "id").activationToken, std::nullopt);
  EXPECT_EQ(take("token", "").startupId, std::nullopt);
}

}  // namespace
}  // namespace Vastel_Connect

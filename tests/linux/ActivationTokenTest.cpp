// Tests platform/linux/ActivationToken.h.
#include "platform/linux/ActivationToken.h"

#include <gtest/gtest.h>

#include "tests/linux/PrivateFolder.h"

namespace Vastel_Connect {
namespace {

TEST(TokenText, IsPrintableAsciiOfALimitedLength) {
  const std::string longest(kTokenLengthLimit, 'x');
  for (const std::string& text : {std::string("!"), std::string("~"), longest,
                                  std::string("gnome-shell/app/1-2_TIME3;c\\d'\"$(e)")}) {
    EXPECT_EQ(tokenText(text), text);
  }
  for (const std::string& text : {std::string(), std::string("a b"), std::string("a\n"),
                                  std::string("\ta"), std::string("a\x7f"), std::string("\x1b[0m"),
                                  std::string("\xc3\xbc"), std::string("a\0b", 3), longest + "x"}) {
    EXPECT_EQ(tokenText(text), std::nullopt) << text;
  }
}

TEST(TakeActivationToken, TakesThemOutOfTheEnvironment) {
  using Value = std::optional<std::string>;
  for (const auto& [value, token] : {std::pair(Value("id_TIME1"), Value("id_TIME1")),
                                     {"to ken", std::nullopt},
                                     {"", std::nullopt},
                                     {std::nullopt, std::nullopt}}) {
    ScopedEnvironment environment;
    environment.set("XDG_ACTIVATION_TOKEN", value);
    environment.set("DESKTOP_STARTUP_ID", "id");
    const ActivationToken first = takeActivationTokenFromEnvironment();
    EXPECT_EQ(first.activationToken, token);
    EXPECT_EQ(first.startupId, "id");
    environment.set("DESKTOP_STARTUP_ID", value);
    const ActivationToken second = takeActivationTokenFromEnvironment();
    EXPECT_EQ(second.activationToken, std::nullopt);
    EXPECT_EQ(second.startupId, token);
    EXPECT_EQ(std::getenv("XDG_ACTIVATION_TOKEN"), nullptr);
    EXPECT_EQ(std::getenv("DESKTOP_STARTUP_ID"), nullptr);
  }
}

}  // namespace
}  // namespace Vastel_Connect

// Tests platform/linux/Scope.h.
#include "platform/linux/Scope.h"

#include <gtest/gtest.h>

#include "platform/linux/Host.h"

namespace Vastel_Connect {
namespace {

TEST(ScopeName, NamesTheApplicationEscapedAsSystemdDoes) {
  const struct {
    std::string_view application;
    std::string_view escaped;
  } rows[] = {
      {"chromium", "chromium"},
      {"org.mozilla.Firefox_2", "org.mozilla.Firefox_2"},
      {"firefox-esr", "firefox\\x2desr"},
      {"a:b", "a:b"},
      {"a b", "a\\x20b"},
      {"a/b", "a\\x2fb"},
      {"a\\b", "a\\x5cb"},
      {"a@b", "a\\x40b"},
      {"\xc3\xbc", "\\xc3\\xbc"},
      {"", ""},
  };
  for (const auto& [application, escaped] : rows) {
    EXPECT_EQ(scopeName(4711, std::string(application)),
              "app-vastel\\x2dconnect-" + std::string(escaped) + "-4711.scope");
  }
}

TEST(StartScope, DoesNothingWithoutABus) {
  ASSERT_EQ(host().bus, nullptr);
  startScope(1, "application");
}

}  // namespace
}  // namespace Vastel_Connect

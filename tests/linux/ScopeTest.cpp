// Tests platform/linux/Scope.h.
#include "platform/linux/Scope.h"

#include <gtest/gtest.h>

#include "platform/linux/Host.h"

namespace Vastel_Connect {
namespace {

TEST(ScopeName, NamesTheApplicationEscapedAsSystemdDoes) {
  EXPECT_EQ(scopeName(4711, "org.mozilla.Fire:fox_2-a b/c\\d@\xc3\xbc"),
            "app-vastel\\x2dconnect-org.mozilla.Fire:fox_2\\x2da\\x20b\\x2fc\\x5cd\\x40\\xc3\\xbc"
            "-4711.scope");
}

TEST(StartScope, DoesNothingWithoutABus) {
  ASSERT_EQ(host().bus, nullptr);
  startScope(1, "application");
}

}  // namespace
}  // namespace Vastel_Connect

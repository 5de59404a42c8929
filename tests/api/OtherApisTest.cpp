// Tests api/OtherApis.h.
#include "api/OtherApis.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace Vastel_Connect {
namespace {

static_assert(!std::is_default_constructible_v<struct_ErrorApi>);
static_assert(!std::is_default_constructible_v<struct_LogApi>);
static_assert(std::is_same_v<decltype(struct_SetHotKeyApi::VirtualKey), std::uint16_t>);
static_assert(std::is_same_v<decltype(struct_SetHotKeyApi::ReadDelay), std::uint16_t>);

TEST(OtherApis, HaveAMessageOrBeginWithNothing) {
  EXPECT_EQ(struct_ErrorApi("no line").Message, "no line");
  EXPECT_EQ(struct_LogApi("call ended").Message, "call ended");
  const auto& [command, alt, superKey, ctrl, shift, key, delay] = struct_SetHotKeyApi();
  EXPECT_FALSE(command || alt || superKey || ctrl || shift || key != 0 || delay != 0);
  EXPECT_FALSE(struct_MakeCallApi().Number);
  EXPECT_FALSE(struct_HotKeyStateApi().Result || struct_HotKeyStateApi().FailReason);
}

}  // namespace
}  // namespace Vastel_Connect

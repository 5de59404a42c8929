// Tests api/OtherApis.h.
#include "api/OtherApis.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace Vastel_Connect {
namespace {

static_assert(!std::is_default_constructible_v<struct_ErrorApi>);
static_assert(!std::is_default_constructible_v<struct_LogApi>);

TEST(OtherApis, CarryTheirMessage) {
  EXPECT_EQ(struct_ErrorApi("no line").Message, "no line");
  EXPECT_EQ(struct_LogApi("call ended").Message, "call ended");
}

TEST(OtherApis, AreBuiltWithTheirOptionalMembersAbsent) {
  EXPECT_FALSE(struct_MakeCallApi().Number);
  EXPECT_FALSE(struct_SetHotKeyApi().Command);
  EXPECT_FALSE(struct_HotKeyStateApi().FailReason);
}

TEST(OtherApis, BeginWithNoKeyNoModifierAndNoSuccess) {
  const struct_SetHotKeyApi key;
  EXPECT_FALSE(key.ModifierAlt || key.ModifierCommand || key.ModifierCtrl || key.ModifierShift);
  EXPECT_EQ(key.VirtualKey, 0);
  EXPECT_EQ(key.ReadDelay, 0);
  EXPECT_FALSE(struct_HotKeyStateApi().Result);
}

TEST(OtherApis, HoldAllTheirMembers) {
  const struct_MakeCallApi call{.Number = "204"};
  EXPECT_EQ(call.Number, "204");
  const struct_HotKeyStateApi state{.Result = false, .FailReason = "taken"};
  EXPECT_FALSE(state.Result);
  EXPECT_EQ(state.FailReason, "taken");
  const struct_SetHotKeyApi key{.Command = "call",
                                .ModifierAlt = true,
                                .ModifierCommand = false,
                                .ModifierCtrl = true,
                                .ModifierShift = false,
                                .VirtualKey = 96,
                                .ReadDelay = 500};
  EXPECT_EQ(key.Command, "call");
  EXPECT_TRUE(key.ModifierAlt && key.ModifierCtrl);
  EXPECT_FALSE(key.ModifierCommand || key.ModifierShift);
  EXPECT_EQ(key.VirtualKey, 96);
  EXPECT_EQ(key.ReadDelay, 500);
}

TEST(OtherApis, HoldAny16BitKeyAndDelay) {
  constexpr std::uint16_t kValues[] = {0, 1, 32768, 65535};
  for (const std::uint16_t value : kValues) {
    const struct_SetHotKeyApi key{.Command = {}, .VirtualKey = value, .ReadDelay = value};
    EXPECT_EQ(key.VirtualKey, value);
    EXPECT_EQ(key.ReadDelay, value);
  }
  static_assert(std::is_same_v<decltype(struct_SetHotKeyApi::VirtualKey), std::uint16_t>);
  static_assert(std::is_same_v<decltype(struct_SetHotKeyApi::ReadDelay), std::uint16_t>);
}

}  // namespace
}  // namespace Vastel_Connect

// Tests platform/macos/Text.h.
#import "platform/macos/Text.h"

#include <gtest/gtest.h>

#include <vector>

/// A text of any code units, which the classes of Foundation may refuse to make.
@interface TestUnitsText : NSString {
  std::vector<unichar> units_;
}
- (instancetype)initWithUnits:(std::vector<unichar>)units;
@end

@implementation TestUnitsText

- (instancetype)initWithUnits:(std::vector<unichar>)units {
  self = [super init];
  if (self) units_ = std::move(units);
  return self;
}

- (NSUInteger)length {
  return units_.size();
}

- (unichar)characterAtIndex:(NSUInteger)index {
  return units_.at(index);
}

@end

namespace Vastel_Connect {
namespace {

std::optional<std::string> utf8Of(std::vector<unichar> units) {
  return utf8Text([[TestUnitsText alloc] initWithUnits:std::move(units)]);
}

TEST(Utf8Text, IsAbsentForNilOnly) {
  EXPECT_EQ(utf8Text(nil), std::nullopt);
  EXPECT_EQ(utf8Text(@""), "");
}

TEST(Utf8Text, KeepsAllButASurrogateWithoutItsOtherHalf) {
  constexpr const char* kReplacement = "\xEF\xBF\xBD";
  const struct {
    std::vector<unichar> units;
    std::string text;
  } rows[] = {
      {{0xD800}, kReplacement},
      {{0xDBFF}, kReplacement},
      {{0xDC00}, kReplacement},
      {{0xDFFF}, kReplacement},
      {{'a', 0xD83D, 'b'}, std::string("a") + kReplacement + "b"},
      {{0xDE00, 0xD83D}, std::string(kReplacement) + kReplacement},
      {{0xD83D, 0xD83D, 0xDE00}, std::string(kReplacement) + "\xF0\x9F\x98\x80"},
      {{0xD800, 0xDC00}, "\xF0\x90\x80\x80"},
      {{0xDBFF, 0xDFFF}, "\xF4\x8F\xBF\xBF"},
      {{0xD7FF, 0xE000}, "\xED\x9F\xBF\xEE\x80\x80"},
      {{'a', 0, 'b'}, std::string("a\0b", 3)},
      {{0xFEFF}, "\xEF\xBB\xBF"},
      {{0xFFFE, 0xFFFF}, "\xEF\xBF\xBE\xEF\xBF\xBF"},
  };
  for (const auto& [units, text] : rows) EXPECT_EQ(utf8Of(units), text);
}

TEST(FoundationText, IsNilForWhatIsNotUtf8) {
  for (const char* bytes : {"\xFF", "a\xC3", "\xED\xA0\x80", "\xC0\x80", "\xF4\x90\x80\x80"}) {
    EXPECT_EQ(foundationText(bytes), nil) << bytes;
  }
}

TEST(FoundationText, ComesBackAsItWas) {
  for (const std::string_view text :
       {std::string_view(""), std::string_view("a\0b", 3), std::string_view("\0", 1),
        std::string_view("caf\xC3\xA9 \xF0\x9F\x98\x80"), std::string_view("\xF4\x8F\xBF\xBF")}) {
    EXPECT_EQ(utf8Text(foundationText(text)), text);
  }
  EXPECT_EQ(foundationText("\xF0\x9F\x98\x80").length, 2U);
}

}  // namespace
}  // namespace Vastel_Connect

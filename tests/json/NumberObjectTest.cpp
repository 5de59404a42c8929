#include "json/NumberObject.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Vastel_Connect {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr std::int32_t kMinInt32 = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMaxInt32 = std::numeric_limits<std::int32_t>::max();
constexpr std::uint32_t kMaxUInt32 = std::numeric_limits<std::uint32_t>::max();
constexpr std::int64_t kMinInt64 = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMaxInt64 = std::numeric_limits<std::int64_t>::max();
constexpr std::uint64_t kMaxUInt64 = std::numeric_limits<std::uint64_t>::max();

struct Row {
  JsonValue number;
  std::int32_t asInt;
  std::uint32_t asUnsignedInt;
  std::int64_t asLongLong;
  std::uint64_t asUnsignedLongLong;
};

const Row kRows[] = {
    {false, 0, 0, 0, 0},
    {true, 1, 1, 1, 1},
    // Integers are taken modulo.
    {0, 0, 0, 0, 0},
    {-1, -1, kMaxUInt32, -1, kMaxUInt64},
    {kMaxInt32, kMaxInt32, 2147483647U, kMaxInt32, 2147483647U},
    {std::int64_t{kMaxInt32} + 1, kMinInt32, 2147483648U, 2147483648, 2147483648U},
    {(std::int64_t{1} << 32) + 5, 5, 5, 4294967301, 4294967301U},
    {kMaxInt64, -1, kMaxUInt32, kMaxInt64, 9223372036854775807U},
    {kMinInt64, 0, 0, kMinInt64, 9223372036854775808U},
    {kMaxUInt64, -1, kMaxUInt32, -1, kMaxUInt64},
    // Reals lose their fraction.
    {-0.0, 0, 0, 0, 0},
    {2.9, 2, 2, 2, 2},
    {-0.9, 0, 0, 0, 0},
    {2147483647.9, kMaxInt32, 2147483647U, 2147483647, 2147483647U},
    {4294967295.5, kMaxInt32, kMaxUInt32, 4294967295, 4294967295U},
    // Reals out of the range are taken for the nearest value.
    {-1.5, -1, 0, -1, 0},
    {-2147483648.9, kMinInt32, 0, -2147483648, 0},
    {-2147483649.0, kMinInt32, 0, -2147483649, 0},
    {9223372036854774784.0, kMaxInt32, kMaxUInt32, 9223372036854774784, 9223372036854774784U},
    {std::ldexp(1.0, 63), kMaxInt32, kMaxUInt32, kMaxInt64, 9223372036854775808U},
    {std::ldexp(1.0, 64), kMaxInt32, kMaxUInt32, kMaxInt64, kMaxUInt64},
    {-std::ldexp(1.0, 63), kMinInt32, 0, kMinInt64, 0},
    {kInfinity, kMaxInt32, kMaxUInt32, kMaxInt64, kMaxUInt64},
    {-kInfinity, kMinInt32, 0, kMinInt64, 0},
    {kNan, 0, 0, 0, 0},
};

TEST(NumberObject, GivesTheIntegerOfEachType) {
  for (const auto& row : kRows) {
    SCOPED_TRACE(boost::json::serialize(row.number));
    const auto number = NumberObject::fromJsonValue(row.number);
    ASSERT_TRUE(number);
    EXPECT_EQ(number->intValue(), row.asInt);
    EXPECT_EQ(number->unsignedIntValue(), row.asUnsignedInt);
    EXPECT_EQ(number->longLongValue(), row.asLongLong);
    EXPECT_EQ(number->unsignedLongLongValue(), row.asUnsignedLongLong);
  }
}

TEST(NumberObject, IsAbsentForWhatIsNoNumber) {
  for (const JsonValue& value : {JsonValue(nullptr), JsonValue("1"),
                                 JsonValue(boost::json::array{1}), JsonValue(JSON{{"a", 1}})}) {
    SCOPED_TRACE(boost::json::serialize(value));
    EXPECT_EQ(NumberObject::fromJsonValue(value), std::nullopt);
  }
}

TEST(NumberObject, KeepsItsForm) {
  EXPECT_TRUE(NumberObject(std::int32_t{-3}).jsonValue().is_int64());
  EXPECT_TRUE(NumberObject(std::uint32_t{3}).jsonValue().is_uint64());
  EXPECT_TRUE(NumberObject(std::int64_t{-3}).jsonValue().is_int64());
  EXPECT_TRUE(NumberObject(std::uint64_t{3}).jsonValue().is_uint64());
  EXPECT_TRUE(NumberObject(3.0).jsonValue().is_double());
  EXPECT_TRUE(NumberObject(true).jsonValue().is_bool());
}

}  // namespace
}  // namespace Vastel_Connect

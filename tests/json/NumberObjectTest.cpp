#include "json/NumberObject.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

namespace Vastel_Connect {
namespace {

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
    {-1, -1, UINT32_MAX, -1, UINT64_MAX},
    {INT32_MAX, INT32_MAX, 2147483647U, INT32_MAX, 2147483647U},
    {std::int64_t{INT32_MAX} + 1, INT32_MIN, 2147483648U, 2147483648, 2147483648U},
    {(std::int64_t{1} << 32) + 5, 5, 5, 4294967301, 4294967301U},
    {INT64_MAX, -1, UINT32_MAX, INT64_MAX, 9223372036854775807U},
    {INT64_MIN, 0, 0, INT64_MIN, 9223372036854775808U},
    {UINT64_MAX, -1, UINT32_MAX, -1, UINT64_MAX},
    // Reals lose their fraction.
    {-0.0, 0, 0, 0, 0},
    {2.9, 2, 2, 2, 2},
    {-0.9, 0, 0, 0, 0},
    {2147483647.9, INT32_MAX, 2147483647U, 2147483647, 2147483647U},
    {4294967295.5, INT32_MAX, UINT32_MAX, 4294967295, 4294967295U},
    // Reals out of the range are taken for the nearest value.
    {-1.5, -1, 0, -1, 0},
    {-2147483648.9, INT32_MIN, 0, -2147483648, 0},
    {-2147483649.0, INT32_MIN, 0, -2147483649, 0},
    {9223372036854774784.0, INT32_MAX, UINT32_MAX, 9223372036854774784, 9223372036854774784U},
    {std::ldexp(1.0, 63), INT32_MAX, UINT32_MAX, INT64_MAX, 9223372036854775808U},
    {std::ldexp(1.0, 64), INT32_MAX, UINT32_MAX, INT64_MAX, UINT64_MAX},
    {-std::ldexp(1.0, 63), INT32_MIN, 0, INT64_MIN, 0},
    {INFINITY, INT32_MAX, UINT32_MAX, INT64_MAX, UINT64_MAX},
    {-INFINITY, INT32_MIN, 0, INT64_MIN, 0},
    {NAN, 0, 0, 0, 0},
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

}  // namespace
}  // namespace Vastel_Connect

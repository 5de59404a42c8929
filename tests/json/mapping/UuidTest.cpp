#include "json/mapping/Uuid.h"

#include <gtest/gtest.h>

namespace Vastel_Connect {
namespace {

TEST(Uuid, IsWrittenInCapitals) {
  const Uuid uuid = {{0xE6, 0x21, 0xE1, 0xF8, 0xC3, 0x6C, 0x49, 0x5A,  //
                      0x93, 0xFC, 0x0C, 0x24, 0x7A, 0x3E, 0x6E, 0x5F}};
  EXPECT_EQ(uuid.uuidString(), "E621E1F8-C36C-495A-93FC-0C247A3E6E5F");
  EXPECT_EQ(Uuid{}.uuidString(), "00000000-0000-0000-0000-000000000000");
}

}  // namespace
}  // namespace Vastel_Connect

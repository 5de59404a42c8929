#include "text/Split.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Vastel_Connect {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(Split, GivesAtLeastOnePartBetweenSeparatorsOfAnyLength) {
  EXPECT_THAT(splitText("", "."), ElementsAre(""));
  EXPECT_THAT(splitText("a", "."), ElementsAre("a"));
  EXPECT_THAT(splitText("a.b", "."), ElementsAre("a", "b"));
  EXPECT_THAT(splitText("a..b", "."), ElementsAre("a", "", "b"));
  EXPECT_THAT(splitText(".", "."), ElementsAre("", ""));
  EXPECT_THAT(splitText("a.b->c", "->"), ElementsAre("a.b", "c"));
  EXPECT_THAT(splitText("a.b", ""), ElementsAre("a.b"));
}

TEST(Split, LeavesEmptyWordsOut) {
  EXPECT_THAT(splitWords(";a;;b;", ";"), ElementsAre("a", "b"));
  EXPECT_THAT(splitWords("", ";"), IsEmpty());
}

}  // namespace
}  // namespace Vastel_Connect

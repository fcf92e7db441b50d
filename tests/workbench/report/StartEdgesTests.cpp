#include "workbench/report/StartEdges.h"

#include <gtest/gtest.h>

namespace {

TEST(StartEdges, AreReversedAndEachOnce) {
  const DependencyLists lists = WithoutRepetitions({{}, {0, 0}, {1, 0, 1}});
  EXPECT_EQ((DependencyLists{{}, {0}, {1, 0}}), lists);
  EXPECT_EQ((DependencyLists{{1, 2}, {2}, {}}), Reversed(lists));
}

TEST(StartEdges, OfTwoCyclesHaveTwoNumbers) {
  // 0 and 1 wait for each other, 3 and 4 too; 2 waits for the first and is waited for by the
  // second.
  const std::vector<std::size_t> numbers = CycleNumbers({{1}, {0}, {1}, {2, 4}, {3}});
  EXPECT_EQ(numbers[0], numbers[1]);
  EXPECT_EQ(numbers[3], numbers[4]);
  EXPECT_NE(numbers[0], numbers[2]);
  EXPECT_NE(numbers[2], numbers[3]);
  EXPECT_NE(numbers[0], numbers[3]);
}

TEST(StartEdges, OfALongCycleNeedNoDeepStack) {
  constexpr std::size_t kCount = 200'000;
  DependencyLists lists(kCount);
  for (std::size_t i = 0; i < kCount; ++i) lists[i] = {(i + 1) % kCount};
  EXPECT_EQ(std::vector<std::size_t>(kCount, CycleNumbers(lists)[0]), CycleNumbers(lists));
}

TEST(StartEdges, AreFollowedOnlyToTheDepth) {
  std::vector<bool> marks(5);
  MarkWithin({{1}, {2, 0}, {3}, {4}, {}}, 0, 2, marks);
  EXPECT_EQ((std::vector<bool>{true, true, true, false, false}), marks);
}

}  // namespace

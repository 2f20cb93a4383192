#include "stats/sorts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

namespace {

std::vector<std::int32_t> Numbers(std::size_t n) {
  std::vector<std::int32_t> numbers(n);
  std::iota(numbers.begin(), numbers.end(), 1);
  return numbers;
}

TEST(Sorts, SortsAndCarriesThePermutation) {
  std::mt19937 random(7);
  for (const std::int32_t n : {1, 2, 3, 11, 12, 13, 40, 500, 3000}) {
    for (const std::uint32_t values : {1U, 2U, 5U, 1000000U}) {
      std::vector<std::int32_t> keys(static_cast<std::size_t>(n));
      for (std::int32_t& key : keys) key = static_cast<std::int32_t>(random() % values) - 3;
      const std::vector<float> reals(keys.begin(), keys.end());
      auto order = Numbers(keys.size()), realOrder = order;
      std::vector<std::int32_t> sorted(keys.size());
      std::vector<float> sortedReals(keys.size());
      stats::SVIGP(n, keys.data(), sorted.data(), order.data());
      stats::SVRGP(n, reals.data(), sortedReals.data(), realOrder.data());
      ASSERT_TRUE(std::is_sorted(sorted.begin(), sorted.end()));
      ASSERT_TRUE(std::is_permutation(order.begin(), order.end(), Numbers(keys.size()).begin()));
      ASSERT_EQ(order, realOrder) << "one method for both";
      for (std::size_t i = 0; i < keys.size(); ++i) {
        ASSERT_EQ(sorted[i], keys[static_cast<std::size_t>(order[i]) - 1]);
        ASSERT_EQ(sortedReals[i], static_cast<float>(sorted[i]));
      }
    }
  }
}

// Worked by hand from the method: the middle element of (5, 5, 5) is the first, and one exchange is skipped.
TEST(Sorts, EqualKeysComeOutAsTheMethodLeavesThem) {
  struct Row {
    std::vector<float> keys;
    std::vector<std::int32_t> order;
  };
  const Row rows[] = {
      {{5, 5, 5}, {1, 2, 3}},
      {{2, 1, 2}, {2, 1, 3}},
      {{2, 2, 1}, {3, 2, 1}},
      {{3, 1, 3, 1}, {2, 4, 3, 1}},
  };
  for (const Row& row : rows) {
    std::vector<float> keys = row.keys;
    auto order = Numbers(keys.size());
    stats::SVRGP(static_cast<std::int32_t>(keys.size()), keys.data(), keys.data(), order.data());
    EXPECT_EQ(order, row.order) << testing::PrintToString(row.keys);
  }
}

TEST(Sorts, NumbersThatCannotBeComparedStayInsideTheArray) {
  std::mt19937 random(3);
  for (std::int32_t n = 1; n <= 200; ++n) {
    std::vector<float> keys(static_cast<std::size_t>(n));
    for (float& key : keys) {
      key = random() % 3 == 0 ? std::numeric_limits<float>::quiet_NaN() : static_cast<float>(random() % 9);
    }
    auto order = Numbers(keys.size());
    stats::SVRGP(n, keys.data(), keys.data(), order.data());
    EXPECT_TRUE(std::is_permutation(order.begin(), order.end(), Numbers(keys.size()).begin()));
  }
}

TEST(Sorts, AnEmptyArrayIsATerminalError) {
  std::int32_t key = 0, order = 1;
  float real = 0;
  EXPECT_EXIT(
      stats::SVIGP(0, &key, &key, &order), testing::ExitedWithCode(1),
      "^ \\*\\*\\* TERMINAL ERROR 5 from SVIGP\\.  The length of vectors IA, IB, and IPERM must be greater "
      "than or equal to one\\.  On input the length, N, is given as 0\\.");
  EXPECT_EXIT(
      stats::SVRGP(-2, &real, &real, &order), testing::ExitedWithCode(1),
      "from SVRGP\\.  The length of vectors RA, RB and IPERM must be greater than or equal to one\\. On "
      "input the length, N, is given as -2\\.");
}

}  // namespace

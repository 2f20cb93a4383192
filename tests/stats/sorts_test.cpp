#include "stats/sorts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <random>
#include <utility>
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

// The method step by step, on places from 1.
struct PlainSort {
  std::vector<std::int32_t> keys, order;
  void Exchange(std::size_t one, std::size_t other) {
    std::swap(keys[one], keys[other]);
    std::swap(order[one], order[other]);
  }
  void ExchangeIfAbove(std::size_t one, std::size_t other) {
    if (keys[one] > keys[other]) Exchange(one, other);
  }
};
std::vector<std::int32_t> PlainOrder(const std::vector<std::int32_t>& input) {
  PlainSort s{{0}, Numbers(input.size() + 1)};
  s.keys.insert(s.keys.end(), input.begin(), input.end());
  s.order.insert(s.order.begin(), 0);
  std::vector<std::pair<std::size_t, std::size_t>> waiting = {{1, input.size()}};
  float r = 0.375F;
  while (!waiting.empty()) {
    const auto [i, j] = waiting.back();
    waiting.pop_back();
    if (i != 1 && j - i < 11) {
      for (std::size_t m = i + 1; m <= j; ++m) {
        for (std::size_t k = m; s.keys[k - 1] > s.keys[k]; --k) s.Exchange(k - 1, k);
      }
      continue;
    }
    if (i == j) continue;
    r += r <= 0.5898437F ? 0.0390625F : -0.21875F;
    const std::size_t t = i + static_cast<std::size_t>(static_cast<float>(j - i) * r);
    s.ExchangeIfAbove(i, t);
    if (s.keys[t] > s.keys[j]) {
      s.Exchange(t, j);
      s.ExchangeIfAbove(i, t);
    }
    const std::int32_t pivot = s.keys[t];
    std::size_t k = i, l = j;
    for (;;) {
      while (s.keys[--l] > pivot) continue;
      while (s.keys[++k] < pivot) continue;
      if (k > l) break;
      if (s.keys[k] != s.keys[l]) s.Exchange(k, l);
    }
    waiting.emplace_back(i, l);
    waiting.emplace_back(k, j);
    if (l - i <= j - k) std::swap(waiting.back(), waiting[waiting.size() - 2]);  // the larger part waits
  }
  s.order.erase(s.order.begin());
  s.order.resize(input.size());
  return s.order;
}

TEST(Sorts, EqualKeysComeOutAsThePlainTranscriptionLeavesThem) {
  std::mt19937 random(12);
  for (std::int32_t n = 1; n <= 400; n += n < 60 ? 1 : 17) {
    for (const std::uint32_t values : {1U, 2U, 3U, 9U, 100U}) {
      std::vector<std::int32_t> keys(static_cast<std::size_t>(n));
      for (std::int32_t& key : keys) key = static_cast<std::int32_t>(random() % values);
      auto order = Numbers(keys.size()), sorted = keys;
      stats::SVIGP(n, keys.data(), sorted.data(), order.data());
      ASSERT_EQ(order, PlainOrder(keys)) << testing::PrintToString(keys);
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

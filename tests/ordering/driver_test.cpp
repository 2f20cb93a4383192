#include "ordering/driver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "ordering/anchor_order.h"
#include "stats/generator.h"
#include "tests/reference/distance_tables.h"
#include "tests/reference/ordering_plain.h"

namespace {

using Order = std::vector<std::int32_t>;
using reference::MakeTable;
using reference::TableKind;

Order Library(std::int32_t n, const std::vector<float>& table, const std::int32_t* method = nullptr) {
  Order order(static_cast<std::size_t>(n), -77);
  ordering::NnTwoOpt(n, table.data(), order.data(), method);
  return order;
}

Order Plain(std::int32_t n, const std::vector<float>& table, const std::int32_t* method = nullptr) {
  Order order(static_cast<std::size_t>(n), -77);
  reference::NnTwoOpt(n, table.data(), order.data(), method);
  return order;
}

Order Identity(std::int32_t n) {
  Order order(static_cast<std::size_t>(n));
  std::iota(order.begin(), order.end(), 1);
  return order;
}

TEST(Driver, SizeTableAtItsRims) {
  const struct {
    std::int32_t n, repetitions, method;
  } rows[] = {{2, 2, 6},     {150, 150, 6},  {151, 151, 17}, {200, 200, 17}, {201, 201, 5}, {500, 500, 5},
              {501, 200, 5}, {1000, 200, 5}, {1001, 100, 5}, {1500, 100, 5}, {1501, 50, 5}, {2000, 50, 5},
              {2001, 20, 5}, {3000, 20, 5},  {3001, 10, 5},  {5000, 10, 5},  {5001, 5, 5},  {6000, 5, 5},
              {6001, 2, 5},  {7000, 2, 5},   {7001, 1, 5},   {50000, 1, 5}};
  for (const auto& row : rows) {
    const ordering::Plan plan = ordering::PlanFor(row.n);
    EXPECT_EQ(plan.repetitions, row.repetitions) << row.n;
    EXPECT_EQ(plan.method, row.method) << row.n;
  }
}

// Every kind of table, every method, the sizes where kernels begin to have candidates, and beyond.
TEST(Driver, SameOrderAsThePlainTranscription) {
  std::mt19937 random(1);
  for (std::int32_t n = 2; n <= 40; ++n) {
    for (int kind = 0; kind < reference::kTableKinds; ++kind) {
      if (static_cast<TableKind>(kind) == TableKind::Huge && n > 9) continue;  // repeats moves for long
      const auto table = MakeTable(static_cast<TableKind>(kind), n, random);
      if (n <= 22) {
        ASSERT_EQ(Library(n, table), Plain(n, table)) << "n " << n << " kind " << kind;
      }
      const auto method = static_cast<std::int32_t>(random() % 19);
      const bool builds = method == 3 || method == 4 || (method >= 8 && method <= 12);
      if (n > 10 && (builds || (method != 1 && method != 5 && n > 24))) continue;
      ASSERT_EQ(Library(n, table, &method), Plain(n, table, &method))
          << "n " << n << " kind " << kind << " method " << method;
    }
  }
}

// Ties but for rounding: the kernels' order, and the order of each sum, decide.
TEST(Driver, EveryMethodOnNearTies) {
  std::mt19937 random(3);
  for (std::int32_t method = 0; method <= 18; ++method) {
    const bool builds = method == 3 || method == 4 || (method >= 8 && method <= 12);
    for (int round = 0; round < 24; ++round) {
      const std::int32_t n = builds ? 9 : 10 + round / 2;
      const auto table = MakeTable(TableKind::Tenths, n, random);
      ASSERT_EQ(Library(n, table, &method), Plain(n, table, &method)) << "n " << n << " method " << method;
    }
  }
}

TEST(Driver, SameOrderAsThePlainTranscriptionInLargeTables) {
  std::mt19937 random(2);
  const std::int32_t twoOptPath = 5;
  for (const std::int32_t n : {57, 90, 130}) {
    for (const TableKind kind : {TableKind::DoubledHaploid, TableKind::DenseDoubledHaploid,
                                 TableKind::DenseF2, TableKind::Integers, TableKind::Sentinels}) {
      const auto table = MakeTable(kind, n, random);
      EXPECT_EQ(Library(n, table, &twoOptPath), Plain(n, table, &twoOptPath)) << n;
    }
  }
}

TEST(Driver, SmallAndOddTables) {
  EXPECT_EQ(Library(1, {}), Order{1});
  EXPECT_EQ(Library(2, {3}), (Order{1, 2}));
  // The closed tour 1 2 3 is cut between 2 and 3, its longest edge.
  EXPECT_EQ(Library(3, {1, 2, 9}), (Order{3, 1, 2}));
  // Equal distances: city 1, then each time the last position that is left, cut at the closing edge.
  EXPECT_EQ(Library(5, std::vector<float>(10, 4.0F)), (Order{1, 5, 2, 3, 4}));
  EXPECT_EQ(Library(9, std::vector<float>(36, std::numeric_limits<float>::infinity())), Identity(9));
  EXPECT_EQ(Library(9, std::vector<float>(36, std::nanf(""))), Identity(9));
  testing::internal::CaptureStderr();
  Order untouched{-5};
  ordering::NnTwoOpt(0, nullptr, untouched.data());
  ordering::NnTwoOpt(-3, nullptr, untouched.data());
  EXPECT_EQ(untouched, Order{-5});
  EXPECT_NE(testing::internal::GetCapturedStderr().find("NSAMP, is -3"), std::string::npos);
}

TEST(Driver, AlwaysAPermutation) {
  std::mt19937 random(4);
  for (const std::int32_t n : {30, 151, 201}) {
    for (const TableKind kind : {TableKind::Undefined, TableKind::Mixed, TableKind::Zeros}) {
      if (kind == TableKind::Undefined && n > 30) continue;
      Order order = Library(n, MakeTable(kind, n, random));
      std::sort(order.begin(), order.end());
      EXPECT_EQ(order, Identity(n));
    }
  }
}

TEST(Driver, RecoversAMapAndLeavesTheGenerator) {
  const std::int32_t n = 160;
  std::vector<float> table;
  for (std::int32_t i = 1; i < n; ++i) {
    // Marker m lies at 37 m mod 160, a scrambled order.
    for (std::int32_t j = 0; j < i; ++j)
      table.push_back(static_cast<float>(std::abs(37 * i % n - 37 * j % n)));
  }
  const stats::GeneratorState before = stats::SaveGenerator();
  const Order order = Library(n, table);
  EXPECT_EQ(stats::SaveGenerator().first, before.first);
  EXPECT_EQ(stats::SaveGenerator().second, before.second);
  for (std::size_t k = 1; k < order.size(); ++k) {
    EXPECT_EQ(std::abs(37 * (order[k] - 1) % n - 37 * (order[k - 1] - 1) % n), 1) << k;
  }
}

TEST(Anchors, Cases) {
  // Markers on a line at these places; the first are the anchors.
  const auto onALine = [](const std::vector<float>& places) {
    std::vector<float> table;
    for (std::size_t i = 1; i < places.size(); ++i) {
      for (std::size_t j = 0; j < i; ++j) table.push_back(std::abs(places[i] - places[j]));
    }
    return table;
  };
  const struct {
    const char* name;
    std::vector<float> places;
    Order given, expected;
  } rows[] = {
      {"between and behind", {0, 10, 20, 12, 25}, {1, 2, 3, 0, 0}, {1, 2, 4, 3, 5}},
      {"before the first", {5, 10, 20, 1, 3}, {1, 2, 3, -1, 0}, {4, 5, 1, 2, 3}},
      {"broken prefix", {0, 10, 20, 12, 25}, {1, 3, 2, 0, 0}, {1, 2, 3, 4, 5}},
      {"anchor behind a gap", {0, 10, 20, 12, 25}, {1, 2, 0, 3, 0}, {1, 2, 3, 4, 5}},
      {"all anchors", {0, 20, 10, 5}, {1, 2, 3, 4}, {1, 2, 3, 4}},
      {"two anchors are ignored", {0, 30, 10, 18}, {1, 2, 0, 0}, {1, 3, 4, 2}},
      {"two anchors that are not first", {10, 0, 30, 20, 40}, {1, 2, 0, 0, 0}, {2, 1, 4, 3, 5}},
      {"no anchors", {0, 20, 10}, {0, 0, 0}, {1, 3, 2}},
      {"tie: lower number first", {0, 10, 20, 10, 10}, {1, 2, 3, 0, 0}, {1, 5, 4, 2, 3}},
      {"anchors out of map order stay", {0, 20, 10, 21}, {1, 2, 3, 0}, {1, 4, 2, 3}},
  };
  for (const auto& row : rows) {
    const auto n = static_cast<std::int32_t>(row.places.size());
    const auto table = onALine(row.places);
    Order order = row.given, plain = row.given;
    ordering::InsertByAnchors(n, table.data(), order.data());
    reference::InsertByAnchors(n, table.data(), plain.data());
    EXPECT_EQ(order, plain) << row.name;
    EXPECT_EQ(order, row.expected) << row.name;
  }
}

TEST(Anchors, SameOrderAsThePlainTranscription) {
  std::mt19937 random(6);
  for (int kind = 0; kind < reference::kTableKinds; ++kind) {
    for (const std::int32_t n : {4, 5, 12, 40}) {
      const auto table = MakeTable(static_cast<TableKind>(kind), n, random);
      for (const std::int32_t k : {3, 4, n / 2, n - 1}) {
        if (k < 3) continue;
        Order order(static_cast<std::size_t>(n));
        std::iota(order.begin(), order.begin() + k, 1);
        Order plain = order;
        ordering::InsertByAnchors(n, table.data(), order.data());
        reference::InsertByAnchors(n, table.data(), plain.data());
        ASSERT_EQ(order, plain) << "n " << n << " k " << k << " kind " << kind;
      }
    }
  }
}

}  // namespace

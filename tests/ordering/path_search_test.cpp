#include "ordering/path_search.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

#include "ordering/full_scan.h"
#include "ordering/start_tour.h"
#include "ordering/tour_kernels.h"
#include "tests/reference/distance_tables.h"
#include "tests/reference/ordering_plain.h"

namespace {

using ordering::City;
using ordering::Move;
using reference::MakeTable;
using reference::TableKind;

std::vector<City> RandomTour(std::int32_t n, std::mt19937& random) {
  std::vector<City> tour(static_cast<std::size_t>(n));
  std::iota(tour.begin(), tour.end(), 1);
  for (std::size_t i = tour.size(); i > 1; --i) std::swap(tour[i - 1], tour[random() % i]);
  return tour;
}

// The move of the pruned search is the move of the full scan, from random tours as from nearly good ones, and
// in both layouts of the table; its gain is the difference of the rebuilt path lengths.
TEST(PathSearch, FindsTheMoveOfTheFullScan) {
  std::mt19937 random(11);
  for (int round = 0; round < 600; ++round) {
    const bool beyondLists = round % 7 == 0;  // more cities than a list of near ones holds
    const auto n = static_cast<std::int32_t>(beyondLists ? 70 + random() % 60 : 8 + random() % 33);
    const auto kind = static_cast<TableKind>(round % 10);  // those of bounded distances
    const std::vector<float> table = MakeTable(kind, n, random);
    const ordering::Distances d = ordering::PrepareDistances(n, table.data());
    ASSERT_TRUE(d.tame);
    const ordering::DenseRows dense{d.dense.data(), static_cast<std::size_t>(n)};
    const ordering::TriangleRows triangle{table.data()};
    std::vector<City> cities = RandomTour(n, random);
    if (random() % 2 == 0) ordering::NearestNeighbourTour(n, table.data(), cities[0], cities.data());
    ordering::Tour tour;
    ordering::LoadTour(dense, n, cities.data(), tour);
    for (const bool three : {false, true}) {
      if (three && beyondLists && round % 35 != 0) continue;  // the full scan takes long
      const Move full = three ? ordering::FullScanThree(dense, ordering::Judge::Path, tour, 0)
                              : ordering::FullScanTwo(dense, ordering::Judge::Path, tour, 0);
      for (const Move& found : {ordering::SearchPathMove(dense, d, tour, three),
                                ordering::SearchPathMove(triangle, d, tour, three)}) {
        if (full.gain > ordering::kSmallestGain) {
          ASSERT_EQ(found.gain, full.gain) << "n " << n << " kind " << static_cast<int>(kind);
          ASSERT_EQ(found.i, full.i);
          ASSERT_EQ(found.j, full.j);
          ASSERT_EQ(found.k, full.k);
          ASSERT_EQ(found.number, full.number);
        } else {
          ASSERT_EQ(found.number, 0);
        }
      }
      if (full.number == 0) continue;
      const float before = ordering::PathLength(dense, n, &tour.city[1]);
      ordering::CitiesAfter(tour, full, cities.data());
      const float after = ordering::PathLength(dense, n, cities.data());
      EXPECT_NEAR(full.gain, before - after, 1e-4F * (before + d.longest));
    }
  }
}

// A run is known by every tour that it passes through, the last one too, which is hashed move by move.
TEST(Kernels, ARunEndsWhereAnotherHasEnded) {
  std::mt19937 random(5);
  for (const bool three : {false, true}) {
    const ordering::Kernel kernel{ordering::Judge::Path, three};
    const std::int32_t n = 40;
    const std::vector<float> table = MakeTable(TableKind::Uniform, n, random);
    const ordering::Distances d = ordering::PrepareDistances(n, table.data());
    const ordering::DenseRows rows{d.dense.data(), static_cast<std::size_t>(n)};
    ordering::SeenTours seen = ordering::EmptySeenTours(n);
    ordering::Tour work;
    std::vector<City> tour = RandomTour(n, random);
    ASSERT_TRUE(ordering::RunKernel(rows, d, kernel, tour.data(), work, seen));
    ASSERT_GT(seen.seen.size(), 10U);
    EXPECT_FALSE(ordering::RunKernel(rows, d, kernel, tour.data(), work, seen));
    std::vector<City> other = RandomTour(n, random);
    EXPECT_TRUE(ordering::RunKernel(rows, d, kernel, other.data(), work, seen));
  }
}

// Crossing 1-2 and 3-4 over makes the closed tour longer, but by an edge that the cut takes out.
TEST(Kernels, ThePathKernelSeesWhatTheClosedTourHides) {
  const std::vector<float> table = {10, 1, 1, 1, 100, 10};
  std::vector<City> closed = {1, 2, 3, 4}, path = closed;
  ordering::TwoOptCycle(4, table.data(), closed.data());
  ordering::TwoOptPath(4, table.data(), path.data());
  EXPECT_EQ(closed, (std::vector<City>{1, 2, 3, 4}));
  EXPECT_EQ(path, (std::vector<City>{1, 3, 2, 4}));
}

TEST(Kernels, EqualThePlainTranscription) {
  using Kernel = void (*)(std::int32_t, const float*, City*);
  const Kernel kernels[] = {ordering::TwoOptCycle,       ordering::ThreeOptCycle, ordering::TwoOptPathExact,
                            ordering::ThreeOptPathExact, ordering::TwoOptPath,    ordering::ThreeOptPath};
  std::mt19937 random(12);
  for (std::int32_t n = 1; n <= 16; ++n) {
    for (int kind = 0; kind < reference::kTableKinds; ++kind) {
      if (static_cast<TableKind>(kind) == TableKind::Huge && n > 8) continue;
      std::vector<float> table = MakeTable(static_cast<TableKind>(kind), n, random);
      table.push_back(0);  // n = 1 has no pair
      for (int kernel = 1; kernel <= 6; ++kernel) {
        std::vector<City> tour = RandomTour(n, random), plain = tour;
        kernels[kernel - 1](n, table.data(), tour.data());
        reference::RunKernel(kernel, n, table.data(), plain.data());
        ASSERT_EQ(tour, plain) << "n " << n << " kind " << kind << " kernel " << kernel;
        ASSERT_EQ(tour[0], 1);
      }
    }
  }
}

TEST(Kernels, AGainOfTheThresholdIsNotApplied) {
  for (const bool above : {false, true}) {
    const float gain = above ? std::nextafter(0.0001F, 1.0F) : 0.0001F;  // of crossing 1-2 and 3-4 over
    const std::vector<float> table = {gain, 0, gain, 0, 0, 0};
    std::vector<City> tour = {1, 2, 3, 4};
    ordering::TwoOptPath(4, table.data(), tour.data());
    EXPECT_EQ(tour, above ? (std::vector<City>{1, 3, 2, 4}) : (std::vector<City>{1, 2, 3, 4}));
  }
}

TEST(StartTour, TiesGoToTheLastPosition) {
  std::mt19937 random(13);
  for (int round = 0; round < 200; ++round) {
    const auto n = static_cast<std::int32_t>(2 + random() % 80);
    const auto table = MakeTable(static_cast<TableKind>(random() % reference::kTableKinds), n, random);
    std::vector<City> tour(static_cast<std::size_t>(n)), plain = tour;
    const auto start = static_cast<City>(1 + random() % static_cast<std::uint32_t>(n));
    ordering::NearestNeighbourTour(n, table.data(), start, tour.data());
    reference::NearestNeighbourTour(n, table.data(), start, plain.data());
    ASSERT_EQ(tour, plain) << "n " << n;
  }
}

}  // namespace

#include "ordering/distances.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "tests/reference/distance_tables.h"

namespace {

using ordering::City;
using reference::TableKind;

// Every city nearer than the reach stands in the list, which is as long as it can be, once and nearest first; where
// distances tie, as they do in Integers, guesses of the reach fail.
TEST(Distances, ListsHoldTheNearestCities) {
  std::mt19937 random(4);
  for (const TableKind kind : {TableKind::Uniform, TableKind::DenseF2, TableKind::Integers, TableKind::Zeros,
                               TableKind::Sentinels, TableKind::Tenths}) {
    for (const std::int32_t n : {2, 3, 64, 65, 66, 127, 128, 129, 300}) {
      const std::vector<float> table = reference::MakeTable(kind, n, random);
      const ordering::Distances d = ordering::PrepareDistances(n, table.data());
      const ordering::TriangleRows rows{table.data()};
      ASSERT_EQ(d.listed, std::min(64, n - 1));
      for (City c = 1; c <= n; ++c) {
        std::vector<float> all;
        for (City other = 1; other <= n; ++other) {
          if (other != c) all.push_back(rows(c, other));
        }
        std::sort(all.begin(), all.end());
        std::vector<char> met(static_cast<std::size_t>(n) + 1, 0);
        for (std::int32_t m = 0; m < d.listed; ++m) {
          const City near = d.Near(c)[m];
          ASSERT_TRUE(near >= 1 && near <= n && near != c && met[static_cast<std::size_t>(near)]++ == 0);
          ASSERT_EQ(d.NearLength(c)[m], rows(c, near));
          ASSERT_EQ(d.NearLength(c)[m], all[static_cast<std::size_t>(m)]) << "n " << n << " place " << m;
        }
        ASSERT_EQ(d.nearest[c], all[0]);
        if (d.listed < n - 1) {
          ASSERT_LE(d.reach[c], all[static_cast<std::size_t>(d.listed) - 1]);
        }
        ASSERT_GE(d.reach[c], d.NearLength(c)[d.listed - 1]);
      }
    }
  }
}

}  // namespace

#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "recombination/clonal_tables.h"
#include "stats/generator.h"
#include "tests/reference/clonal_plain.h"

namespace tests {

inline void ExpectSameOnEveryLevel(const recombination::Genotypes& data, const std::string& what) {
  const stats::GeneratorState before = stats::SaveGenerator();
  reference::ClonalResults plain(data.numMarkers);
  reference::ClonalPairsPlain(data, plain.Places());
  const float nextDraw = stats::UniformDraw();
  for (int32_t level = 0; level <= static_cast<int32_t>(recombination::BestLevel()); ++level) {
    stats::RestoreGenerator(before);
    reference::ClonalResults fast(data.numMarkers);
    recombination::ComputeClonalPairs(data, fast.Places(), static_cast<recombination::Level>(level));
    EXPECT_EQ(stats::UniformDraw(), nextDraw) << what << ": as many draws";
    EXPECT_EQ(plain.phase, fast.phase) << what;
    for (size_t k = 0; k < 9; ++k) {
      for (size_t p = 0; p < plain.phase.size(); ++p) {
        const float x = plain.real[k][p], y = fast.real[k][p];
        ASSERT_TRUE(x == y || (std::isnan(x) && std::isnan(y)))
            << what << " array " << k << " pair " << p << " level " << level << ": " << x << ' ' << y;
      }
    }
  }
}

}  // namespace tests

#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "recombination/clonal_tables.h"
#include "stats/generator.h"
#include "tests/reference/clonal_plain.h"

namespace tests {

struct Tables {
  explicit Tables(int32_t n) : phase(static_cast<size_t>(n) * static_cast<size_t>(n), 9) {
    real.fill(std::vector<float>(phase.size(), -3));
  }
  recombination::ClonalPairResults Places() {
    return {{real[0].data(), real[1].data(), real[2].data()},
            {real[3].data(), real[4].data(), real[5].data()},
            {real[6].data(), real[7].data(), real[8].data()},
            phase.data()};
  }
  std::array<std::vector<float>, 9> real;
  std::vector<int32_t> phase;
};

inline void ExpectSameOnEveryLevel(const recombination::Genotypes& data, const std::string& what) {
  const stats::GeneratorState before = stats::SaveGenerator();
  Tables plain(data.numMarkers);
  reference::ClonalPairsPlain(data, plain.Places());
  const float nextDraw = stats::UniformDraw();
  for (int32_t level = 0; level <= static_cast<int32_t>(recombination::BestLevel()); ++level) {
    stats::RestoreGenerator(before);
    Tables fast(data.numMarkers);
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

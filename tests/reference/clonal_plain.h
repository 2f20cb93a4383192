#pragma once

#include <array>
#include <vector>

#include "recombination/clonal_tables.h"

namespace reference {

// The results of the pairs of n markers, in room for n * n; at first values that no estimate gives.
struct ClonalResults {
  explicit ClonalResults(int32_t n) : phase(static_cast<std::size_t>(n) * static_cast<std::size_t>(n), 9) {
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

// The pair loop written out: letters counted one by one, every pair estimated anew. Draws like the library.
void ClonalPairsPlain(const recombination::Genotypes& data, const recombination::ClonalPairResults& results);

}  // namespace reference

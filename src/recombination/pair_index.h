#pragma once

#include <cstdint>

namespace recombination {

// Number of unordered pairs of n markers.
constexpr std::int64_t PairCount(std::int64_t n) { return n * (n - 1) / 2; }

// One-based place of the pair of markers i and j (one-based, in any order) in a pair array: (2,1), (3,1),
// (3,2), (4,1), ... The pair of a marker with itself has no place of its own.
constexpr std::int64_t PairIndex(std::int64_t i, std::int64_t j) {
  return i > j ? PairCount(i - 1) + j : PairCount(j - 1) + i;
}

}  // namespace recombination

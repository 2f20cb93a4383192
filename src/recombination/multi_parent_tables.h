#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "recombination/pair_tables.h"

// Doubled haploids and inbred lines of four or eight parents: populations 1 4PDH, 2 4PRIL, 3 8PDH, 4 8PRIL.
// The category is the marker's parental pattern: a decimal digit a parent, parents of one digit share an
// allele. Letters A to D or A to H, X missing.
namespace recombination {

inline constexpr size_t kParentLetters = 9;  // A to H, then X

// One element a marker each. p is 1 for a pattern of one class; without observations both are not a number.
struct MultiParentMarkerResults {
  std::array<int32_t*, kParentLetters> count;
  float *chi, *p;
};

// One element a pair each, in the order of PairIndex.
struct MultiParentPairResults {
  float* rec;       // 0 to 0.5
  float* lod;       // not below 0
  float* distance;  // centimorgans
};

void ComputeMultiParentMarkers(const Genotypes& data, const MultiParentMarkerResults& results);

// A population outside 1 to 4 keeps frequency and LOD. Work memory: under 2 bytes a genotype cell and 64 MB.
void ComputeMultiParentPairs(const Genotypes& data, const MultiParentPairResults& results);
void ComputeMultiParentPairs(const Genotypes& data, const MultiParentPairResults& results, Level level);

// Digit of parent k, from 0, in a pattern of that many parents.
constexpr int32_t AlleleAt(int32_t pattern, int32_t parents, int32_t k) {
  for (int32_t step = k + 1; step < parents; ++step) pattern /= 10;
  return pattern % 10;
}

}  // namespace recombination

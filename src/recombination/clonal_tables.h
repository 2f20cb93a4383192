#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "recombination/pair_tables.h"

// Clonal F1 (population 1) and double cross (any other): each parent has its own frequency and phase.
// Categories: 1 ABCD (letters A to D), 2 A=B (E, F), 3 C=D (G, H), 4 AB=CD and 5 A=D,B=C (I, J, K).
namespace recombination {

inline constexpr size_t kClonalLetters = 12;  // A to K, then X

// One element a marker each. chi and p keep their values where the category is none of 1 to 5; without
// observations both are not a number.
struct ClonalMarkerResults {
  std::array<int32_t*, kClonalLetters> count;
  float *chi, *p;
};

// One element a pair each, in the order of PairIndex. [0] the AB parent, [1] the CD parent, above 0.5 in
// repulsion; [2] both together.
struct ClonalPairResults {
  std::array<float*, 3> rec, lod, distance;
  int32_t* phase;  // 1 coupling in both parents, 2 repulsion in CD, 3 in AB, 4 in both; empty pairs: kept
};

void ComputeClonalMarkers(const Genotypes& data, const ClonalMarkerResults& results);

// Draws from the process-wide generator once for every pair of two category 4 markers of a clonal F1 that
// have a line in common, in the order of the pairs. Work memory: under 2 bytes a genotype cell and 16 MB.
void ComputeClonalPairs(const Genotypes& data, const ClonalPairResults& results);
void ComputeClonalPairs(const Genotypes& data, const ClonalPairResults& results, Level level);

}  // namespace recombination

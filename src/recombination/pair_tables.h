#pragma once

#include <cstdint>

namespace recombination {

// What the pair statistics of a mapping population read. Markers are counted from 1; marker m's code letters
// (A, H, B, D, R, X) stand at genotype[(m - 1) * populationSize], one a line.
struct Genotypes {
  int32_t population = 0;             // 1 to 20
  int32_t mappingFunction = 0;        // 1 Kosambi, 2 Haldane, 3 Morgan
  int32_t populationSize = 0;         // S
  int32_t numMarkers = 0;             // how many the loops run over
  const int32_t* category = nullptr;  // 1 co-dominant, 12 dominant, 10 recessive
  const char* genotype = nullptr;
};

// One element a marker each.
struct MarkerResults {
  int32_t *countA, *countH, *countB, *countX;
  float *chi, *p;
};

// One element a pair each, in the order of PairIndex.
struct PairResults {
  float* rec;         // above 0.5 in repulsion
  float* lod;         // never below 0
  float* crossovers;  // as if in coupling
  float* distance;    // centimorgans
};

// Chi-square test of the population's ratio, on folded counts. Two degrees of freedom for a co-dominant
// marker of a selfing population, else one. chi keeps its value for a selfing population and an unknown
// category. Without observations chi is not a number and p is 0.
void SegregationTest(int32_t population, int32_t category, int32_t countA, int32_t countH, int32_t countB,
                     float& chi, float& p);

// Counts with the dominance codes folded, and the segregation test, for every marker.
void ComputeMarkerResults(const Genotypes& data, const MarkerResults& results);

// Frequency, LOD, crossovers and distance of every pair. Work memory: under 4 bytes a genotype cell and at
// most 64 MB of remembered tables.
void ComputePairTables(const Genotypes& data, const PairResults& results);

// Instruction sets of the pair loop; the results are the same with each.
enum class Level : int32_t { Portable, Popcnt, Avx2, Avx512 };
Level BestLevel();  // of this processor
void ComputePairTables(const Genotypes& data, const PairResults& results, Level level);

}  // namespace recombination

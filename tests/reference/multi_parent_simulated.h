#pragma once

#include <cstdint>
#include <vector>

namespace reference {

// Made-up crosses of two, four or eight parents, gamete by gamete, for tests and timings.
struct ParentsPlan {
  int32_t population = 1, lines = 200, markers = 100;
  double missing = 0;        // share of X
  double biallelic = 1;      // four and eight parents: share of markers with two alleles, others have more
  int32_t chromosomes = 10;  // markers evenly spread
  double spacing = 0.05;     // recombination frequency between neighbours
  uint32_t seed = 1;
};

struct ParentsCross {
  std::vector<char> genotype;  // marker m of 1.., line l at (m - 1) * lines + l - 1
  std::vector<int32_t> category;
  // clonal F1: whether the AB and the CD parent carry the marker's alleles the other way round
  std::vector<char> flippedAB, flippedCD;
};

// Population 1 clonal F1 with phases by chance, 2 double cross in coupling. Categories 1 to 4, or 1 to 5, in
// equal parts.
ParentsCross SimulateClonal(const ParentsPlan& plan);

// Populations 1 4PDH, 2 4PRIL, 3 8PDH, 4 8PRIL.
ParentsCross SimulateMultiParent(const ParentsPlan& plan);

}  // namespace reference

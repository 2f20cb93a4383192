#pragma once

#include <cstdint>
#include <vector>

namespace reference {

// A made-up mapping population for tests and timings.
struct CrossPlan {
  int32_t population = 7, lines = 200, markers = 100;
  double missing = 0;        // share of X
  double dominant = 0;       // share of markers seen as dominant or recessive (selfing populations)
  double repulsion = 0;      // share of markers with the parents' alleles exchanged
  int32_t chromosomes = 10;  // markers evenly spread
  double spacing = 0.05;     // recombination frequency between neighbours
  uint32_t seed = 1;
};

struct Cross {
  std::vector<char> genotype;  // marker m of 1.., line l at (m - 1) * lines + l - 1
  std::vector<int32_t> category;
};

Cross SimulateCross(const CrossPlan& plan);

}  // namespace reference

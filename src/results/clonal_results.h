#pragma once

// The result files of a clonal F1 or a double cross: STEM.hap (parental haplotypes), STEM.cdq (project file
// of the mapping engine), STEM.sum, .sumf, .summ (summaries), and STEM.rec, .lod, .dis with an "f" and an "m"
// (pair tables) where asked for.

#include <array>
#include <cstdint>
#include <string_view>

#include "results/new_map.h"

namespace results {

// Pair arrays over the running numbers of the project file, in the order of enum ParentalMap.
using PairFamily = std::array<const float*, 3>;  // both parents, AB, CD

struct ClonalResults {
  std::array<int32_t, 3> writeTables;  // 1 writes the family: .rec, .lod, .dis
  NewMap map;
  int32_t fileMarkers;     // markers of the project file
  const int32_t* deleted;  // running numbers of those that are not on the map
  PairFamily recombination, lod, distance;
  const int32_t* phaseCode;  // of each pair, 1 to 4; any other value tells nothing
};

// Three steps, each of which reads the project file anew. Where the file cannot be read, names, categories
// and genotypes stay blank; nothing is reported.
void WriteClonalResults(std::string_view fileName, std::string_view stem, const ClonalResults& results);

}  // namespace results

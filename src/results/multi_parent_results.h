#pragma once

// The result files of a four- or eight-parent population: STEM.plq (project file of the mapping engine),
// STEM.sum (summary), and STEM.rec, .lod, .dis (pair tables) where asked for.

#include <array>
#include <cstdint>
#include <string_view>

#include "results/new_map.h"

namespace results {

struct MultiParentResults {
  std::array<int32_t, 3> writeTables;  // 1 writes the file: .rec, .lod, .dis
  NewMap map;
  int32_t fileMarkers;                          // markers of the project file
  const int32_t* deleted;                       // running numbers of those that are not on the map
  const float *recombination, *lod, *distance;  // pair arrays over the running numbers
};

// Three steps, each of which reads the project file anew. Where the file cannot be read, names, categories
// and genotypes stay blank; nothing is reported.
void WriteMultiParentResults(std::string_view fileName, std::string_view stem,
                             const MultiParentResults& results);

}  // namespace results

#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "recombination/clonal_counts.h"
#include "recombination/clonal_tables.h"

// From what is estimated category by category to rows in the order of the markers.
namespace recombination {

inline constexpr size_t kMostStores = 6;  // five categories and what is none

// Pairs of a row with the positions from..to of a store, one after the other. A column that is null holds what a
// parent gets that nothing tells of: 0.5, 0 and 1000.
struct StorePart {
  const ClonalPlanes* store;
  size_t from, to;
  std::array<const float*, 3> rec, lod, distance;
};
// A row's pairs with the project's markers from a block on.
struct RowPart {
  size_t block, count;
  std::array<StorePart, kMostStores> store;
  size_t stores;
};

// Goes into the row that begins with pair `first` of the results; the phases follow from the frequencies.
void WriteRow(Level level, const RowPart& part, const ClonalPairResults& results, size_t first);

}  // namespace recombination

#pragma once

#include <cstdint>

#include "recombination/pair_index.h"

namespace results {

// A pair array of the host, over the running numbers 1 to `markers` of the project file.
template <class T>
struct PairArray {
  const T* values;
  int32_t markers;
};

// The value of a pair, or `otherwise` for a pair that the array has no place for: a number outside the file,
// or a marker with itself.
template <class T>
T PairAt(const PairArray<T>& array, int32_t i, int32_t j, T otherwise) {
  const bool inside = i >= 1 && j >= 1 && i <= array.markers && j <= array.markers && i != j;
  return inside ? array.values[recombination::PairIndex(i, j) - 1] : otherwise;
}

}  // namespace results

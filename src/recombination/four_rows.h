#pragma once

#include <array>

#include "recombination/lane_math.h"

namespace recombination {

// Four entries of four floats, one after the other, to vectors of each entry's first, second, third and fourth.
inline std::array<Float4, 4> Transposed(const std::array<Float4, 4>& e) {
  const Float4 low0 = __builtin_shufflevector(e[0], e[1], 0, 4, 1, 5),
               low1 = __builtin_shufflevector(e[2], e[3], 0, 4, 1, 5),
               high0 = __builtin_shufflevector(e[0], e[1], 2, 6, 3, 7),
               high1 = __builtin_shufflevector(e[2], e[3], 2, 6, 3, 7);
  return {__builtin_shufflevector(low0, low1, 0, 1, 4, 5), __builtin_shufflevector(low0, low1, 2, 3, 6, 7),
          __builtin_shufflevector(high0, high1, 0, 1, 4, 5),
          __builtin_shufflevector(high0, high1, 2, 3, 6, 7)};
}

}  // namespace recombination

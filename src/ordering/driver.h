#pragma once

#include <cstdint>

#include "ordering/distances.h"

namespace ordering {

// Orders n markers along an open path: order[n] becomes a permutation of 1..n with a short sum of the
// distances between neighbours. dist is a pair array in the order of PairIndex. Without a method the size
// table decides; a method 1..17 names a row of the method table, any other improves nothing. For n below 1
// the sampler's message goes to standard error and nothing else happens.
void NnTwoOpt(std::int32_t n, const float* dist, std::int32_t* order, const std::int32_t* method = nullptr);

// Repetitions (start cities 1, 2, ...) and method that the size table gives for n.
struct Plan {
  std::int32_t repetitions, method;
};
Plan PlanFor(std::int32_t n);

}  // namespace ordering

#pragma once

#include <span>

namespace stats {

// The rank of each value, in the order of x; values that differ by at most fuzz from the one below share the
// lowest rank of their run. Fewer than two values are a terminal error.
void RANKS(std::span<const float> x, float* score, float fuzz);

}  // namespace stats

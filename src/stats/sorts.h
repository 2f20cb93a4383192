#pragma once

#include <cstdint>

namespace stats {

// Ascending sorts with a permutation: sorted[n] = values[n] sorted, permutation[n] rearranged in the same way
// (the caller fills it, as a rule with 1..n). Both arrays may be the same. The method is fixed, so that the
// order of equal keys always comes out the same; it is not the input order. n below 1 is a terminal error.
void SVIGP(std::int32_t n, const std::int32_t* values, std::int32_t* sorted, std::int32_t* permutation);
void SVRGP(std::int32_t n, const float* values, float* sorted, std::int32_t* permutation);

}  // namespace stats

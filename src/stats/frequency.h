#pragma once

#include <cstdint>
#include <span>

namespace stats {

// One-way frequency table of k classes over the bounds given: below, k - 2 inner ones of equal width, above.
//   table  out  k counts     div  out  k class middles
// A value between the bounds that no class takes, through rounding, is not counted. Terminal errors: no
// values, k below 3 (nothing is written then), bounds not in order, a value that is not a number.
void OWFRQ(std::span<const float> x, int32_t k, float* table, float xlo, float xhi, float* div);

}  // namespace stats

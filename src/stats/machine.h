#pragma once

#include <cstdint>

namespace stats {

// Machine constants of the 32-bit float, which = 1..8: smallest normal, largest finite, 2^-24, 2^-23,
// log10(2), quiet NaN, +infinity, -infinity. Any other number is a terminal error.
float AMACH(std::int32_t which);

}  // namespace stats

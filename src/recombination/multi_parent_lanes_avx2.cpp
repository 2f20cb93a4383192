#include <array>
#include <cmath>
#include <concepts>
#include <cstring>
#include <utility>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include "recombination/map_functions.h"
#include "recombination/multi_parent_lanes.h"
#include "stats/roots.h"

#if defined(__x86_64__)
// From here on code is made for this instruction set: nothing but templates over Float8 may follow, so that
// no function that another file also makes is touched.
#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC target("avx2")
#endif

#include "recombination/multi_parent_estimator.h"

namespace recombination {

void EstimateMultiParentAvx2(const MultiParentLaneJob& job) { EstimateMultiParent<Float8>(job); }

}  // namespace recombination

#if defined(__clang__)
#pragma clang attribute pop
#endif
#endif

#include <array>
#include <cmath>
#include <concepts>
#include <cstring>
#include <utility>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include "recombination/clonal_lanes.h"
#include "recombination/map_functions.h"
#include "stats/roots.h"

#if defined(__x86_64__)
// From here on code is made for this instruction set: nothing but templates over Float8 may follow, so that
// no function that another file also makes is touched.
#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC target("avx2")
#endif

#include "recombination/clonal_estimator.h"

namespace recombination {

void EstimateClonalAvx2(const ClonalLaneJob& job) { EstimateClonal<Float8>(job); }

}  // namespace recombination

#if defined(__clang__)
#pragma clang attribute pop
#endif
#endif

#include <cmath>
#include <concepts>
#include <cstring>
#include <initializer_list>
#include <utility>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include "recombination/layouts.h"
#include "recombination/map_functions.h"
#include "recombination/pair_lanes.h"
#include "recombination/two_class_models.h"
#include "stats/roots.h"

#if defined(__x86_64__)
// From here on code is made for this instruction set: nothing but templates over Float8 may follow, so that
// no function that another file also makes is touched.
#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC target("avx2")
#endif

#include "recombination/pair_lanes_body.h"

namespace recombination {

void EstimateAvx2(const LaneJob& job) { Estimate<Float8>(job); }

}  // namespace recombination

#if defined(__clang__)
#pragma clang attribute pop
#endif
#endif

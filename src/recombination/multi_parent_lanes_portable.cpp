#include <array>
#include <cmath>
#include <concepts>
#include <cstring>
#include <utility>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include "recombination/map_functions.h"
#include "recombination/multi_parent_iteration.h"
#include "recombination/multi_parent_lanes.h"
#include "stats/roots.h"

namespace recombination {

void EstimateMultiParentPortable(const MultiParentLaneJob& job) { EstimateMultiParent<Float4>(job); }

}  // namespace recombination

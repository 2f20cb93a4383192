#include <array>
#include <cmath>
#include <concepts>
#include <cstring>
#include <utility>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include "recombination/clonal_estimator.h"
#include "recombination/clonal_lanes.h"
#include "recombination/map_functions.h"
#include "stats/roots.h"

namespace recombination {

void EstimateClonalPortable(const ClonalLaneJob& job) { EstimateClonal<Float4>(job); }

}  // namespace recombination

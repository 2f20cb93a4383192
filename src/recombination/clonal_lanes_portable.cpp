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

void EstimateClonalLanes(Level level, const ClonalLaneJob& job) {
  switch (level) {
#if defined(__x86_64__)
    case Level::Avx512:
      return EstimateClonalAvx512(job);
    case Level::Avx2:
      return EstimateClonalAvx2(job);
#endif
    default:
      return EstimateClonalPortable(job);
  }
}

}  // namespace recombination

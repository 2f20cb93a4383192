#include <cmath>
#include <concepts>
#include <cstring>
#include <initializer_list>
#include <utility>

#include "recombination/layouts.h"
#include "recombination/map_functions.h"
#include "recombination/pair_lanes.h"
#include "recombination/pair_lanes_body.h"
#include "recombination/two_class_models.h"
#include "stats/roots.h"

namespace recombination {

void EstimatePortable(const LaneJob& job) { Estimate<Float4>(job); }

void EstimateLanes(Level level, const LaneJob& job) {
  switch (level) {
#if defined(__x86_64__)
    case Level::Avx512:
      return EstimateAvx512(job);
    case Level::Avx2:
      return EstimateAvx2(job);
#endif
    default:
      return EstimatePortable(job);
  }
}

}  // namespace recombination

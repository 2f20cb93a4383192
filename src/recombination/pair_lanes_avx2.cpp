#include "recombination/pair_lanes.h"
#include "recombination/wide_lanes.h"

#if defined(__x86_64__)
#include "recombination/avx2_begin.h"
// In these instructions:
#include "recombination/pair_lanes_body.h"

namespace recombination {

void EstimateAvx2(const LaneJob& job) { Estimate<Float8>(job); }

}  // namespace recombination

#include "recombination/instructions_end.h"
#endif

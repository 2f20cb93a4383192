#include "recombination/pair_lanes.h"
#include "recombination/wide_lanes.h"

#if defined(__x86_64__)
#include "recombination/avx512_begin.h"
// In these instructions:
#include "recombination/pair_lanes_body.h"

namespace recombination {

void EstimateAvx512(const LaneJob& job) { Estimate<Float16>(job); }

}  // namespace recombination

#include "recombination/instructions_end.h"
#endif

#include "recombination/clonal_lanes.h"
#include "recombination/wide_lanes.h"

#if defined(__x86_64__)
#include "recombination/avx2_begin.h"
// In these instructions:
#include "recombination/clonal_estimator.h"

namespace recombination {

void EstimateClonalAvx2(const ClonalLaneJob& job) { EstimateClonal<Float8>(job); }

}  // namespace recombination

#include "recombination/instructions_end.h"
#endif

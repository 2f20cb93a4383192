#include "recombination/clonal_lanes.h"
#include "recombination/wide_lanes.h"

#if defined(__x86_64__)
#include "recombination/avx512_begin.h"
// In these instructions:
#include "recombination/clonal_estimator.h"

namespace recombination {

void EstimateClonalAvx512(const ClonalLaneJob& job) { EstimateClonal<Float16>(job); }

}  // namespace recombination

#include "recombination/instructions_end.h"
#endif

#include "recombination/multi_parent_lanes.h"
#include "recombination/wide_lanes.h"

#if defined(__x86_64__)
#include "recombination/avx2_begin.h"
// In these instructions:
#include "recombination/multi_parent_iteration.h"

namespace recombination {

void EstimateMultiParentAvx2(const MultiParentLaneJob& job) { EstimateMultiParent<Float8>(job); }

}  // namespace recombination

#include "recombination/instructions_end.h"
#endif

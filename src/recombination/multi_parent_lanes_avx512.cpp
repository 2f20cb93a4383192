#include "recombination/multi_parent_lanes.h"
#include "recombination/wide_lanes.h"

#if defined(__x86_64__)
#include "recombination/avx512_begin.h"
// In these instructions:
#include "recombination/multi_parent_iteration.h"

namespace recombination {

void EstimateMultiParentAvx512(const MultiParentLaneJob& job) { EstimateMultiParent<Float16>(job); }

}  // namespace recombination

#include "recombination/instructions_end.h"
#endif

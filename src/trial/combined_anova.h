#pragma once

// Analysis of variance over all environments of a trait: blocks within environments, genotypes, environments
// and their interaction, all tested against the pooled error; predictions; Bartlett's test of equal error
// variances.

#include <cstdint>
#include <string_view>

#include "trial/trial_table.h"

namespace trial {

// For a trait with two environments or more, behind AnalyseEnvironments. Without error degrees of freedom
// there is no record and no prediction. Fewer than two environments with error degrees of freedom end the
// process, with CHIDF's message.
void CombinedAnova(int32_t aovUnit, std::string_view traitName, TrialTrait& trait);

}  // namespace trial

#pragma once

#include <cstdint>

#include "trial/trial_table.h"

namespace trial {

// The .pca and .pcp files: two axes of the genotype by environment table of each trait, once with the
// genotypes' own effects (GGE) and once without (AMMI); biplot scores, and the table as rebuilt from the
// axes. A trait of fewer than two genotypes or environments leaves no record.
void BiplotAnalysis(int32_t pcaUnit, int32_t pcpUnit, const TrialTable& table);

}  // namespace trial

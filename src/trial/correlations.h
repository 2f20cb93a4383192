#pragma once

#include <cstdint>
#include <span>

#include "trial/trial_table.h"

namespace trial {

// Pearson's correlation of the pairs without a missing value, in one pass of float; not a number without a
// pair.
float PearsonR(std::span<const float> x, std::span<const float> y);

// The .coe file: correlations of cell means between traits within each environment, and between environments
// within each trait. What nothing computes prints as NaN.
void CorrelationTables(int32_t unit, const TrialTable& table);

}  // namespace trial

#pragma once

#include <cstdint>

#include "trial/trial_table.h"

namespace trial {

// The .qqp file: the residuals of every plot beside the normal quantiles of their ranks. An environment with
// a single plot of a trait ends the process, with RANKS's message.
void QuantileTables(int32_t unit, const TrialTable& table);

}  // namespace trial

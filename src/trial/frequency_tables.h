#pragma once

#include <cstdint>

#include "trial/trial_table.h"

namespace trial {

// The .frq file: plots by block, cell means by environment and predictions of each trait, tallied into
// numClasses classes over one pair of bounds. Fewer than three classes and a trait of a single value end the
// process, with OWFRQ's message, once something is to be tallied.
void FrequencyTables(int32_t unit, int32_t numClasses, const TrialTable& table);

}  // namespace trial

#pragma once

#include <cstdint>

#include "trial/trial_table.h"

namespace trial {

// The .egv file: means of every genotype in every environment, their simple mean and the prediction.
void WriteMeansAndPredictions(int32_t unit, const TrialTable& table);

}  // namespace trial

#pragma once

#include <cstdint>

#include "project/store.h"

namespace project {

inline constexpr float kMissingPhenotype = -9999.0F;

// Reads `rows` rows of a trait's (or an environment's) name and Header.PopulationSize values. A value of -100
// is missing, until a textual mark ("NA", "na", "*" or ".") is met: from then on, and in every later file of
// the process, only such marks are missing and -100 is a value. Fills Phenotype, TraitName and TraitFlag. A
// value that is no number ends the process.
void ReadPhenotypeSection(int32_t unit, int32_t log, int32_t& status, int32_t rows, ProjectBlock& block);

}  // namespace project

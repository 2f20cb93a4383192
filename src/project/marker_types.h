#pragma once

#include <cstdint>

#include "project/store.h"

namespace project {

// Reads the genotype table of a project file: `markers` rows of a marker name and
// Header.PopulationSize tokens (with a category text in front for clonal and multi-parent populations), coded
// by the rules of moduleCode. Fills MarkerCategory, MarkerName and Genotype. The first bad row is reported
// and ends the reading; equal names are all reported. A code without rules reads no rows.
void ReadMarkerTypes(int32_t moduleCode, int32_t unit, int32_t log, int32_t& status, int32_t markers,
                     ProjectBlock& block);

}  // namespace project

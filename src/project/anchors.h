#pragma once

#include <cstdint>

#include "project/store.h"

namespace project {

// Reads the anchor section: a row of marker name and group for each marker of the genotype table, in its
// order; 0 stands for no group. Fills AnchorInfo; the first bad row is reported and ends the reading.
void ReadAnchorSection(int32_t unit, int32_t log, int32_t& status, ProjectBlock& block);

}  // namespace project

#pragma once

#include <cstdint>

#include "project/store.h"

namespace project {

// Reads Header.NumFamilies rows of a family's name and size into FamilyName and FamilySize. The population
// size of a nested design is the sum of its families.
void ReadFamilies(int32_t unit, int32_t log, int32_t& status, ProjectBlock& block);

}  // namespace project

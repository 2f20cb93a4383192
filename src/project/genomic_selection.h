#pragma once

// The pre-reads of genomic-selection files. They have no log: reports go to unit 100, which is the default
// file "fort.100" where nothing is connected. After a report the file stays open on the project unit.

#include <cstdint>
#include <string_view>
#include <vector>

#include "project/store.h"

namespace project {

// Reads the whole file; the number of traits is read straight into numTraits. Names of the two marker tables
// that differ are reported but no failure. False after any other report.
bool ReadSelectionTraits(std::string_view fileName, int32_t& numTraits);

// Reads up to the training phenotypes: the trait names, and the size of the breeding population, which is
// read straight into its place.
bool ReadSelectionNames(std::string_view fileName, std::vector<ShortName>& traitNames, int32_t& breedingSize);

}  // namespace project

#pragma once

#include <cstdint>
#include <vector>

#include "project/store.h"

namespace project {

// Reads the linkage map of a project file: Header.NumChromosomes rows of a name and a number of markers, then
// a row a marker, chromosome after chromosome in map order: name, chromosome number, and position or interval
// as Header.MarkerSpaceType says. Intervals become positions and Morgan centimorgans. Fills ChromName,
// Chromosome and, if all is well up to the order of the positions, TotalMarkers. A bad row is reported and
// ends the reading; equal names are all reported, but not in a file of several maps (moduleCode 103), which
// share markers.
void ReadChromosomeSection(int32_t moduleCode, int32_t unit, int32_t log, int32_t& status,
                           ProjectBlock& block);

// Positions in the file's unit (Header.MarkerSpaceUnit) to centimorgans.
void ScaleToCentimorgans(int32_t spaceUnit, std::vector<float>& places);

// The map and the genotype table must have the same markers in the same order: each difference is reported.
void CheckNameAgreement(int32_t log, int32_t& status, const ProjectBlock& block);

}  // namespace project

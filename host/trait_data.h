#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/input_file.h"
#include "host/marker_data.h"

namespace host {

// The check of a file with a linkage map (BIP, MET, NAM, CSL, SDL, CDQ, PLQ); it hands nothing back. A value
// that is no number, on which the library stops the process, comes back as a report of one line.
LoadResult CheckTraitFile(const InputFile& file, std::string_view module);
bool HasTraitCheck(std::string_view module);

// What the pre-read of a file of several maps tells, after it has read all of it.
struct MapCounts {
  int32_t markerSpaceType = 0, markerSpaceUnit = 0, maps = 0;
  int32_t markers = 0;  // over all maps
};
LoadResult CountMaps(const InputFile& file, MapCounts& counts);

// What the two pre-reads of a genomic-selection file tell.
struct SelectionData {
  int32_t numTraits = 0, breedingSize = 0;
  std::vector<std::string> traits;
  bool breedingWrong = false;  // what is wrong is in the table of the breeding population
};
// The log has the reports; names that differ between the populations are told there and pass.
LoadResult LoadSelection(const InputFile& file, SelectionData& data);

}  // namespace host

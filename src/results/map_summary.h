#pragma once

// The summary of a map: every marker with its place, the length of each group, the markers left out.

#include <cstdint>
#include <string_view>
#include <vector>

#include "results/marker_file.h"
#include "results/new_map.h"
#include "results/pair_arrays.h"

namespace results {

struct SummaryMarker {
  int32_t marker;    // running number in the project file
  float position;    // in the group
  float recombFreq;  // with the marker before it; 0.5 for the first of a group
};

struct MapSummary {
  std::vector<std::vector<SummaryMarker>> groups;
  std::vector<int32_t> deleted;  // running numbers, ascending
};

// The markers of the file that are not on the map; the host lists as many as the file has more.
std::vector<int32_t> DeletedMarkers(const NewMap& map, int32_t fileMarkers, const int32_t* deleted);

// In ascending order.
std::vector<int32_t> Sorted(std::vector<int32_t> markers);

// The map as the host gives it, with frequencies from `rec`.
MapSummary WholeMapSummary(const NewMap& map, const PairArray<float>& rec, std::vector<int32_t> deleted);

void WriteMapSummary(int32_t unit, const NewMap& map, const MarkerFile& file, const MapSummary& summary);

}  // namespace results

#pragma once

#include <string>
#include <vector>

#include "host/linkage_map.h"
#include "host/marker_data.h"

namespace host {

// What a run of `map` found, for people and for programs.
struct MapRun {
  std::string input;
  LinkThresholds thresholds;
  int32_t minGroup = 2;
  MapData data;
  LinkageMap map;
  std::vector<std::string> warnings, written;
};

// The table STEM.map.tsv: a heading, one line a place in map order, then the unlinked markers.
std::string MapTable(const MapData& data, const LinkageMap& map);

std::vector<std::string> MapWarnings(const MapData& data, const LinkageMap& map);
std::string MapSummary(const MapRun& run);
std::string MapJson(const MapRun& run);

// Markers with a segregation p-value below 0.01; markers without a genotype are not tested.
int32_t DistortedMarkers(const MapData& data);
// Share of genotypes that are missing over all markers, 0 to 1.
double MissingShare(const MapData& data);

}  // namespace host

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/cleaning.h"
#include "host/linkage_map.h"
#include "host/lod_sweep.h"
#include "host/marker_data.h"

namespace host {

// What a run of `map` found, for people and for programs. Running numbers are those of the data, which are the
// file's own where nothing was cleaned.
struct MapRun {
  std::string input;
  LinkThresholds thresholds;
  int32_t minGroup = 2;
  MapData data;
  LinkageMap map;
  std::vector<SweepRow> sweep;
  std::string cut;          // how --groups found the LOD, else empty
  CleaningLedger cleaning;  // cleaning.rules.Any() tells whether there was one
  std::vector<std::string> warnings, written;

  // Number of a marker in the file that the user gave.
  int32_t FileNumber(int32_t marker) const {
    return cleaning.kept.empty() ? marker : cleaning.kept[static_cast<std::size_t>(marker - 1)];
  }
};

// The table STEM.map.tsv: a heading, one line a place in map order, then the unlinked markers. A binned marker
// has a line behind the one that stands for it.
std::string MapTable(const MapRun& run);

std::vector<std::string> MapWarnings(const MapData& data, const LinkageMap& map);
std::string MapSummary(const MapRun& run);
std::string MapJson(const MapRun& run);

// LOD cut, groups of at least minGroup markers, markers in them, markers in none, sizes largest first.
std::string SweepTable(const MapRun& run);
std::string SweepJson(const MapRun& run);

// Markers with a segregation p-value below 0.01; markers without a genotype are not tested.
int32_t DistortedMarkers(const MapData& data);
// Share of genotypes that are missing over all markers, 0 to 1.
double MissingShare(const MapData& data);

}  // namespace host

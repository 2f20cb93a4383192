#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "host/grouping.h"
#include "host/marker_data.h"

namespace host {

// A distance from here on stands for two markers that show no linkage (the library gives 1000).
inline constexpr float kUnlinkedDistance = 999.0F;

struct MapPlace {
  int32_t marker;  // running number in the file
  // To the marker before; 0 at the first place of a group.
  float position = 0, interval = 0;  // centimorgans
  float rec = 0, lod = 0;
};

struct LinkageGroup {
  std::string name;
  int32_t anchor = 0;
  std::vector<MapPlace> places;
  double length = 0;   // centimorgans, without gaps
  int gaps = 0;        // neighbours that show no linkage
  int repulsions = 0;  // neighbours with a frequency above 0.5
};

struct LinkageMap {
  std::vector<LinkageGroup> groups;  // longest first
  std::vector<int32_t> unlinked;     // ascending
};

// Running numbers of the markers that a file lists, one name a line, in the order of a trusted map. Blank
// lines and lines with "!" in column 1 are skipped. Failure InputWrong: a name that is not in the data or
// stands twice.
std::vector<int32_t> ReadFrame(const std::filesystem::path& path, const MapData& data);

// The order of each group, in running numbers: freely, or with the markers of `frame` (empty for none) kept
// in their order where a group holds three or more of them. Runs in one child process.
std::vector<std::vector<int32_t>> OrderGroups(const MapData& data, const std::vector<MarkerGroup>& groups,
                                              const std::vector<int32_t>& frame, bool quiet);

// Turns an order so that the frame runs upwards or, with fewer than two of its markers, so that the end that
// stands first in the file is the origin.
void Orient(std::vector<int32_t>& order, const std::vector<int32_t>& frame);

// Positions are sums of the distances between neighbours. Neighbours that show no linkage are 1000 cM apart
// in the files, since every reader of them takes such a distance as a frequency of 0.5; the length leaves it
// out.
LinkageGroup PlaceMarkers(const MapData& data, const std::vector<int32_t>& order);

// Groups of at least `minGroup` markers, ordered, placed, sorted and named: "G7" for the group with anchor 7,
// "LG1", "LG2", ... for the others, longest first.
LinkageMap BuildMap(const MapData& data, const std::vector<MarkerGroup>& groups, int32_t minGroup,
                    const std::vector<int32_t>& frame, bool quiet);

}  // namespace host

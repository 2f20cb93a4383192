#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/grouping.h"
#include "host/marker_data.h"

namespace host {

// A distance from here on stands for two markers that show no linkage (the library gives 1000).
inline constexpr float kUnlinkedDistance = 999.0F;

// A place of a clonal cross on the map of one parent.
struct ParentalPlace {
  bool onMap = false;  // the marker shows this parent's gametes
  float position = 0;  // centimorgans
  int phase = 0;       // 1 alleles as the file has them, -1 exchanged, 0 not known; the first on the map is 1
};

struct MapPlace {
  int32_t marker;  // running number in the file
  // To the marker before; 0 at the first place of a group.
  float position = 0, interval = 0;  // centimorgans
  float rec = 0, lod = 0;
  bool bridged = false;                   // the interval follows from common neighbours
  std::array<ParentalPlace, 2> parent{};  // clonal crosses: AB, CD
};

struct LinkageGroup {
  std::string name;
  int32_t anchor = 0;
  std::vector<MapPlace> places;
  double length = 0;  // centimorgans, without gaps
  int gaps = 0;       // neighbours that show no linkage
};

struct LinkageMap {
  std::vector<LinkageGroup> groups;  // longest first
  std::vector<int32_t> unlinked;     // ascending
};

// How the markers of a group come into their order.
struct OrderPlan {
  bool keepFileOrder = false;
  std::vector<int32_t> frame;  // markers in a trusted order, which is kept where a group holds three or more
  int32_t jobs = 1;            // groups ordered at the same time, each in a process; no result depends on it
  bool quiet = false;
  std::unordered_map<int32_t, std::string> groupNames;  // of anchor groups that are not named by number
};

// The order of each group, in running numbers, each from a child process of its own.
std::vector<std::vector<int32_t>> OrderGroups(const MapData& data, const std::vector<MarkerGroup>& groups,
                                              const OrderPlan& plan);

// Turns an order so that the frame runs upwards or, with fewer than two of its markers, so that the end that
// stands first in the file is the origin.
void Orient(std::vector<int32_t>& order, const std::vector<int32_t>& frame);

// Positions are sums of the distances between neighbours; of a clonal cross the parents' maps come with them.
// Neighbours that show no linkage are 1000 cM apart in the files, since every reader of them takes such a
// distance as a frequency of 0.5; the length leaves it out.
LinkageGroup PlaceMarkers(const MapData& data, const std::vector<int32_t>& order);

// Groups of at least `minGroup` markers, ordered, placed, sorted and named: by plan.groupNames or "G7" for the
// group with anchor 7, "LG1", "LG2", ... for the others, longest first.
LinkageMap BuildMap(const MapData& data, const std::vector<MarkerGroup>& groups, int32_t minGroup,
                    const OrderPlan& plan);

}  // namespace host

#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace host {

// Two markers are linked when LOD >= minLod and the frequency, folded to the lower half, is <= maxRec.
struct LinkThresholds {
  float minLod = 3.0F;
  float maxRec = 0.3F;
};

struct MarkerGroup {
  int32_t anchor = 0;            // number of the anchor group in it, 0 for none
  std::vector<int32_t> markers;  // running numbers from 1, ascending
};

// A link that joins two groups.
struct Join {
  int32_t first, second;  // running numbers from 1, first below second
  float lod;
};

// The links that join groups when the strongest come first (highest LOD, then lowest frequency, then file
// order), down to thresholds.minLod. Markers with the same anchor number above 0 are one group from the start,
// and a link that would join two different anchor groups is passed over.
std::vector<Join> JoinMarkers(std::span<const int32_t> anchors, std::span<const float> rec,
                              std::span<const float> lod, const LinkThresholds& thresholds);

// The groups that the joins with a LOD of at least minLod make, in the order of their first marker.
std::vector<MarkerGroup> GroupsAt(std::span<const int32_t> anchors, std::span<const Join> joins,
                                  float minLod);

// Groups of markers, a partition of 1..n, in the order of their first marker.
//
// JoinMarkers, then GroupsAt. Without anchors these are the connected components of the links.
std::vector<MarkerGroup> GroupMarkers(std::span<const int32_t> anchors, std::span<const float> rec,
                                      std::span<const float> lod, const LinkThresholds& thresholds);

}  // namespace host

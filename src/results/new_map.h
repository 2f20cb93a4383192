#pragma once

// A finished map as the host hands it over. Places are numbered from 1; the groups (chromosomes) are
// consecutive runs of places.

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace results {

struct NewMap {
  int32_t numMarkers;  // places
  int32_t numChromosomes;
  const char* chromosomeName;        // 19 characters each
  const int32_t* chromosomeMarkers;  // places of each chromosome
  const int32_t* order;              // the marker's running number in the input file, for each place
  const float* position;             // position or interval length, for each place
};

inline int32_t MarkerAt(const NewMap& map, int32_t place) { return map.order[place - 1]; }
inline float PositionAt(const NewMap& map, int32_t place) { return map.position[place - 1]; }
std::string_view ChromosomeNameAt(const NewMap& map, int32_t c);

// The places of a group; last is below first in an empty one.
struct PlaceRun {
  int32_t first, last;
};

// The run of each group. Groups that claim more places than the map has end with the map.
std::vector<PlaceRun> GroupRuns(const NewMap& map);

// The chromosome number of each place, from the first place on: it rises by one where a place lies behind the
// running sum of places, and by no more than one, so behind an empty chromosome one place bears its number.
struct ChromosomeWalk {
  int32_t numChromosomes;
  const int32_t* markers;  // places of each chromosome
  int32_t current = 1;
  int64_t sum = 0;  // of the places up to the current chromosome

  ChromosomeWalk(int32_t chromosomes, const int32_t* places);
  int32_t At(int32_t place);
};

}  // namespace results

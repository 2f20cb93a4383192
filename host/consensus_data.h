#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/input_file.h"
#include "host/marker_data.h"

namespace host {

// A marker of a consensus, at its place there.
struct ConsensusMarker {
  std::string name;
  float position = 0;            // centimorgans from the first marker
  std::vector<int32_t> place;    // on each map, from 1; 0 where it is not on the map
  std::vector<float> positions;  // on each map, centimorgans; -1 where it is not on the map
};

struct Consensus {
  std::vector<std::string> maps;
  std::vector<ConsensusMarker> markers;  // in consensus order
  std::string tables;                    // the library's own account of the order
};

// Reads a CMP file and orders the union of its maps. A file that is wrong comes back in the result.
LoadResult LoadConsensus(const InputFile& file, Consensus& consensus);

// Turns the consensus so that its first marker is its last.
void Turn(Consensus& consensus);

}  // namespace host

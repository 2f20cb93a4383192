#pragma once

#include <cstddef>
#include <cstdint>

#include "recombination/pair_tables.h"

namespace recombination {

inline constexpr size_t kMostLanes = 16;

// Which linkage phase is asked for. Of populations of two classes each one can be had by itself: frequency and LOD
// are those of the phase's own table then, the distance that of the frequency which the pair would get.
enum class Phases : int32_t { Better, Coupling, Repulsion };

// Many tables of one population and one pair code that it knows, at once.
struct LaneJob {
  int32_t population, pairCode, mappingFunction;
  const float* cells;  // cell k of table t at cells[k * stride + t]
  size_t stride;
  size_t count;  // rounded up to kMostLanes by the routines: room and readable cells must be there
  float* rec;
  float* lod;       // not below 0
  float* distance;  // centimorgans
  Phases phases = Phases::Better;
};

// One routine an instruction set, the same results from each. Empty tables get 0.5, 0 and 1000.
void EstimatePortable(const LaneJob& job);
#if defined(__x86_64__)
void EstimateAvx2(const LaneJob& job);
void EstimateAvx512(const LaneJob& job);
#endif

// By the routine of a level.
void EstimateLanes(Level level, const LaneJob& job);

}  // namespace recombination

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "recombination/pair_tables.h"

namespace recombination {

// What two categories come to. counts[0] is always the number of lines that both markers show.
enum class ClonalModel : int32_t {
  Nothing,
  OneParent,     // 1: lines that tell of the parent; 2: recombinant ones
  FirstParent,   // what the AB parent alone tells
  SecondParent,  // the CD parent
  BothParents,
  WithFour,       // an ABCD marker with AB=CD: six classes
  WithFourPhase,  // and once more by the phases found
  WithFive,       // with A=D,B=C
  Coupling,       // AB=CD twice: four classes
  TwoPhases,      // or repulsion in one of the parents
  FiveFive,       // A=D,B=C twice
  FourFive,       // AB=CD with A=D,B=C
};
inline constexpr size_t kMostCounts = 7;

// Many pairs of one model at once. OneParent gives rec[0], lod[0] and distance[0], the LOD not yet limited, and in
// rec[2] the frequency folded. BothParents and the models of an ABCD marker find the first three in the places of the
// parents; what they and the others give is ready for the caller.
struct ClonalLaneJob {
  ClonalModel model;
  int32_t mappingFunction;
  const int32_t* counts;  // count k of pair t at counts[k * stride + t]
  size_t stride;
  size_t count;  // rounded up to kMostLanes by the routines: room and readable counts must be there
  std::array<float*, 3> rec, lod, distance;
};

// One routine an instruction set, the same results from each. A pair without lines gets 0.5, 0 and 1000.
void EstimateClonalPortable(const ClonalLaneJob& job);
#if defined(__x86_64__)
void EstimateClonalAvx2(const ClonalLaneJob& job);
void EstimateClonalAvx512(const ClonalLaneJob& job);
#endif

// By the routine of a level.
void EstimateClonalLanes(Level level, const ClonalLaneJob& job);

}  // namespace recombination

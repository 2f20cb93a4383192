#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace recombination {

// What two categories come to. counts[0] is always the number of lines that both markers show.
enum class ClonalModel : int32_t {
  Nothing,
  BothParents,    // 1, 2: AB parent not recombinant and recombinant; 3, 4: CD parent
  FirstParent,    // 1, 2: AB parent
  SecondParent,   // 1, 2: CD parent
  WithFour,       // an ABCD marker with AB=CD: six classes
  WithFourPhase,  // and once more by the phases found
  WithFive,       // with A=D,B=C
  Coupling,       // AB=CD twice: four classes
  TwoPhases,      // or repulsion in one of the parents
  FiveFive,       // A=D,B=C twice
  FourFive,       // AB=CD with A=D,B=C
};
inline constexpr size_t kMostCounts = 7;

// Many pairs of one model at once.
struct ClonalLaneJob {
  ClonalModel model;
  int32_t mappingFunction;
  const float* counts;  // count k of pair t at counts[k * stride + t]
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

}  // namespace recombination

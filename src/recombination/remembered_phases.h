#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "recombination/pair_tables.h"

// Populations of two classes of unequal frequency: no two counts decide, but one phase of a pair depends on its
// lines, its mixed cells and the cell of the other class alone. Both phases are remembered by these, apart.
namespace recombination {

// What one phase comes to, as if it were the better one.
struct PhaseEstimate {
  uint32_t tag;  // what the slot leaves out of the three counts; kNoTag: free
  float rec;     // of the phase's own table
  float lod;
  float distance;  // of the frequency that the caller gets
};
inline constexpr uint32_t kNoTag = ~0U;
inline constexpr int32_t kMostPhaseLines = 65535;  // counts of 16 bits

// A later table takes the slot of an earlier one. 2 MB.
struct RememberedPhases {
  std::vector<PhaseEstimate> coupling, repulsion;
};
void OpenPhases(RememberedPhases& phases);

inline constexpr size_t kMostPhasePairs = 512;

// Pairs of one run: cells 3 i + j of kMostPhasePairs counts each, where only those of the population's two classes
// are not 0. Readable, and the results writable, up to the next multiple of 4 behind count.
struct PhaseJob {
  Level level;
  int32_t population, mappingFunction;
  const uint32_t* cells;
  size_t count;
  float *rec, *lod, *crossovers, *distance;
};
void ResolvePhases(RememberedPhases& phases, const PhaseJob& job);

}  // namespace recombination

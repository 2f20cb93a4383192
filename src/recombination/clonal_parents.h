#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "recombination/clonal_counts.h"

// One parent of a cross by itself: its recombinant lines among those that tell of it decide everything.
namespace recombination {

struct ParentKnown {
  float rec, lod, distance, folded;  // LOD as it is, maybe below 0
};

// What is known, filled as numbers of lines occur. At most 16 MB.
struct ParentTables {
  Level level;
  int32_t mappingFunction;
  std::vector<ParentKnown>
      known;  // of c in n lines at n (n + 1) / 2 + c; empty for very many lines or few pairs
};
// numPairs: how many are to come; for few of them nothing is kept.
ParentTables OpenParents(Level level, int32_t mappingFunction, int32_t populationSize, int64_t numPairs);

// One run of pairs, count of them; all readable and writable, and the counts 0, up to the next multiple of kMostLanes.
// seen: lines that both markers show; a pair without has 0.5.
struct ParentRun {
  const int32_t *seen, *lines, *changed;
  size_t count;
  float *rec, *lod, *distance, *folded;
};
void ResolveParent(ParentTables& tables, const ParentRun& run);

}  // namespace recombination

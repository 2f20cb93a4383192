#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/grouping.h"

namespace host {

inline constexpr float kLeastCut = 1.0F;  // LOD; cuts below it are not looked at

// The groups that one LOD cut makes.
struct SweepRow {
  float lod = 0;
  std::vector<int32_t> sizes;  // of the groups of two markers or more, largest first
  int32_t single = 0;          // markers linked to no other
};

// Cuts from 1 to 10 in steps of a half and on to 20 in whole steps; `joins` go down to a LOD of 1 at least.
std::vector<SweepRow> SweepCuts(std::span<const int32_t> anchors, std::span<const Join> joins);

// Sizes of the groups of at least minGroup markers, single markers too where that is 1; largest first.
std::vector<int32_t> LargeSizes(const SweepRow& row, int32_t minGroup);

// Cuts that give the same groups: above `low`, up to `high` (infinite where no link is stronger).
struct CutRange {
  float low = 0, high = 0;
  int32_t groups = 0;  // of at least minGroup markers
};
std::vector<CutRange> CutRanges(std::span<const int32_t> anchors, std::span<const Join> joins,
                                int32_t minGroup);

// The longest run of cuts above `lod` that gives one number of groups, where that is more than `lod` gives, the run
// is longer than that of `lod` itself, and few more markers than there (one in twenty) stand alone: what speaks for
// groups that links of chance have joined.
std::optional<CutRange> SteadierRange(const std::vector<SweepRow>& rows, float lod, int32_t minGroup);

// The widest range that gives so many groups; the higher one of equals.
std::optional<CutRange> RangeFor(const std::vector<CutRange>& ranges, int32_t groups);
// A cut in the middle of a range, with two decimals where they lie within it.
float CutIn(const CutRange& range);

}  // namespace host

#pragma once

// A cross of two heterozygous parents AB and CD has three maps: the whole one and one for each parent, which
// leaves out the markers that do not segregate in that parent.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "results/map_summary.h"
#include "results/marker_file.h"
#include "results/new_map.h"
#include "results/pair_arrays.h"
#include "results/pair_table_writer.h"

namespace results {

enum ParentalMap : std::size_t { kWholeMap, kMapAB, kMapCD };

struct ParentalMapRow {
  std::string_view suffix;       // of the extensions
  std::string_view leftOut;      // the category that the map leaves out; none on the whole map
  std::array<int32_t, 2> same;   // PhaseCodes under which two markers are in coupling in this parent,
  std::array<int32_t, 2> other;  // and in repulsion
};
inline constexpr std::array<ParentalMapRow, 3> kParentalMaps = {{
    {"", "", {}, {}},
    {"f", "A=B", {1, 2}, {3, 4}},
    {"m", "C=D", {1, 3}, {2, 4}},
}};

bool IsOnMap(const MarkerFile& file, ParentalMap which, int32_t marker);

// The markers of a map in its order.
TableSelection SelectMarkers(const NewMap& map, const MarkerFile& file, ParentalMap which);

// For each place 1 or -1, the phase of its marker in the parent against the first of the group, or 0 where it
// is not known or the marker is not on the parent's map.
std::vector<int32_t> ParentPhases(const NewMap& map, const MarkerFile& file, ParentalMap which,
                                  const PairArray<int32_t>& phaseCode);

// The map of one parent. Neighbours of the whole map with a frequency of their own lie as far apart as this
// parent's `distance` tells; all others keep the distance that they have on the whole map. `deleted` has the
// markers that are on no map.
MapSummary ParentSummary(const NewMap& map, const MarkerFile& file, ParentalMap which,
                         const PairArray<float>& rec, const PairArray<float>& distance,
                         std::vector<int32_t> deleted);

}  // namespace results

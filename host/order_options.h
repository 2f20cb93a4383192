#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/lod_sweep.h"
#include "host/marker_data.h"

namespace host {

// Running numbers of the markers by name; 0 for one that cleaning has dropped, and for a binned one the number
// of the marker that stands for it.
using MarkerNumbers = std::unordered_map<std::string, int32_t>;
MarkerNumbers NumbersOf(const MapData& data);

// Running numbers of the markers that a file lists, one name a line, in the order of a trusted map. Blank
// lines and lines with "!" in column 1 are skipped, dropped markers too. Failure InputWrong: a name that is not
// known or stands twice.
std::vector<int32_t> ReadFrame(const std::filesystem::path& path, const MarkerNumbers& numbers);

// Known groups of markers.
struct AnchorTable {
  std::vector<int32_t> anchors;                    // by marker, 0 for none
  std::unordered_map<int32_t, std::string> names;  // of groups whose name in the table is no number
};

// A line a marker: name, tab, group. A group is a number (0 for none) or a name, which stands for a number not
// in use; blank or "-" is none. A first line "marker", tab, anything is a heading. Markers that are not named
// have no group. Failure InputWrong: a line without a tab, an unknown name, two groups for a marker, a group
// name of more than 19 characters or that the results use themselves.
AnchorTable ReadAnchorTable(const std::filesystem::path& path, const MarkerNumbers& numbers,
                            int32_t numMarkers);

// The cut for `--groups`, with how it was found in words. Failure InputWrong where no cut gives so many
// groups; it names the nearest count that one gives.
struct ChosenCut {
  float lod = 0;
  std::string words;  // "LOD 4.37 gives 5 groups of 2 markers or more, as every cut above 3.9 up to 4.84"
};
ChosenCut ChooseCut(std::span<const int32_t> anchors, std::span<const Join> joins, int32_t groups,
                    int32_t minGroup);

}  // namespace host

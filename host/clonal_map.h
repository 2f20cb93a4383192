#pragma once

#include "host/linkage_map.h"

namespace host {

// Fills the parents' places of an ordered group of a clonal cross. A parent's map keeps the markers that show
// its gametes: all but A=B on the map of parent AB, all but C=D on that of CD. Kept markers that are neighbours
// on the whole map and have a frequency of the parent's own stand at the parent's distance, others at the
// distance of the whole map: what the summary files of the parents say too.
void PlaceOnParents(const MapData& data, LinkageGroup& group);

// Length of a parent's map of the group, centimorgans; 0 AB, 1 CD.
float ParentLength(const LinkageGroup& group, std::size_t parent);

}  // namespace host

#pragma once

#include <cstdint>

namespace ordering {

// Orders the markers of a consensus map. Markers with anchorInfo above 1 are the anchors: they are ordered
// among themselves first and take in the others. order[n] becomes a permutation of 1..n, position[n] the
// cumulative distance along it from 0. dist is a pair array in the order of PairIndex. The anchors' order and
// the whole order are written as two tables to unit 100, which is the default file "fort.100" where nothing
// is connected.
void CmpByAnchorOrder(std::int32_t n, const std::int32_t* anchorInfo, const float* dist, std::int32_t* order,
                      float* position);

// Cumulative distances along an order of n markers; the first is 0.
void CumulativePositions(std::int32_t n, const float* dist, const std::int32_t* order, float* position);

}  // namespace ordering

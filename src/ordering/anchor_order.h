#pragma once

#include <cstdint>

namespace ordering {

// Fits markers into a fixed frame of anchors. On entry the positive entries of order[n] must be 1, 2, ..., k
// at its front, the anchors; every other marker is put, the one nearest to an anchor first, where it
// lengthens the path least. A broken prefix gives the order 1..n; fewer than three anchors are ignored and
// NnTwoOpt orders all. dist is a pair array in the order of PairIndex.
void InsertByAnchors(std::int32_t n, const float* dist, std::int32_t* order);

}  // namespace ordering

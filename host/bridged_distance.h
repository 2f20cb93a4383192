#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "host/marker_data.h"

namespace host {

// Some markers of a clonal cross or of several parents tell nothing about each other: one shows the gametes of
// parent AB only, the other those of CD; the alleles of one part the parents {1,2} from {3,4}, those of the
// other {1,3} from {2,4}. Their place follows from the markers that both are linked to.

// Whether a pair has no estimate of its own and may take the one of its common neighbours. Pairs of
// bi-parental populations never do.
bool NeedsBridge(const MapData& data, std::size_t pair);

// The distance that the nearest common neighbours agree on: for each of them the two markers lie either on its
// two sides, at the sum of its distances, or on one, at their difference. Of distances that fit about equally
// well it is the largest. Element k of both spans is the distance to neighbour k, from kUnlinkedDistance on for
// one that is not linked. kNoBridge without neighbours.
inline constexpr float kNoBridge = 1000.0F;
float AgreedDistance(std::span<const float> toFirst, std::span<const float> toSecond);

// The distances from a marker to those of a group, as AgreedDistance takes them.
std::vector<float> LinkedDistances(const MapData& data, std::span<const int32_t> group, int32_t marker);

}  // namespace host

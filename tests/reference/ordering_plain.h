#pragma once

#include <cstdint>

// Plain transcriptions of the ordering definitions: successor lists, every candidate judged in turn, pair
// lookups through PairIndex. Slow and exact; the library's orders must equal these.
namespace reference {

void NnTwoOpt(std::int32_t n, const float* dist, std::int32_t* order, const std::int32_t* method = nullptr);
void InsertByAnchors(std::int32_t n, const float* dist, std::int32_t* order);

void NearestNeighbourTour(std::int32_t n, const float* dist, std::int32_t start, std::int32_t* tour);
void TourLength(std::int32_t n, const float* dist, const std::int32_t* tour, float& sum, float& longest);
void CutAtLongestEdge(std::int32_t n, const float* dist, std::int32_t* tour);

// Kernel 1..6: TwoOptCycle, ThreeOptCycle, TwoOptPathExact, ThreeOptPathExact, TwoOptPath, ThreeOptPath.
void RunKernel(int kernel, std::int32_t n, const float* dist, std::int32_t* tour);

}  // namespace reference

#pragma once

#include <array>
#include <cstdint>
#include <unordered_set>
#include <vector>

#include "ordering/full_scan.h"
#include "ordering/tour.h"

namespace ordering {

// A kernel improves tour[n] in place by the best move of each scan until no move gains more than
// kSmallestGain, and leaves it beginning at city 1.
void TwoOptCycle(std::int32_t n, const float* dist, City* tour);
void ThreeOptCycle(std::int32_t n, const float* dist, City* tour);
void TwoOptPathExact(std::int32_t n, const float* dist, City* tour);
void ThreeOptPathExact(std::int32_t n, const float* dist, City* tour);
void TwoOptPath(std::int32_t n, const float* dist, City* tour);
void ThreeOptPath(std::int32_t n, const float* dist, City* tour);

struct Kernel {
  Judge judge;
  bool three;  // three removed edges, else two
};

// Tours are remembered by 128 bits of hash; two of the some thousand tours of a call share them with a
// probability below 2^-80.
struct TourHash {
  std::uint64_t first, second;
  bool operator==(const TourHash&) const = default;
};
struct TourHashBucket {
  std::size_t operator()(const TourHash& hash) const { return static_cast<std::size_t>(hash.first); }
};

// The tours that the repetitions of one call have passed through in one step of the kernel sequence. What
// follows a tour depends on nothing else, so a repetition that meets one can end: it would only tie.
struct SeenTours {
  Places<std::array<std::uint64_t, 4>> weights;  // one-based, of a city as front and as rear of an edge
  std::unordered_set<TourHash, TourHashBucket> seen;
  std::vector<TourHash> passed;  // by the repetition at hand; joins `seen` when it has ended
};
SeenTours EmptySeenTours(std::int32_t n);

// Runs the kernel on tour[n]; `work` is scratch. Returns false, the tour left as it was, if it meets a tour
// of `seen` (which may be null).
template <class Rows>
bool RunKernel(const Rows& rows, const Distances& d, Kernel kernel, City* tour, Tour& work, SeenTours& seen);

}  // namespace ordering

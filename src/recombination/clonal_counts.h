#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "recombination/clonal_lanes.h"
#include "recombination/pair_tables.h"

namespace recombination {

inline constexpr size_t kClonalRun = 128;  // pairs of one row taken together

// The four classes of a letter; the gamete of the AB parent, then of the CD parent; any class.
enum ClonalPlane : uint8_t {
  kClass0,
  kClass1,
  kClass2,
  kClass3,
  kHigh0,
  kHigh1,
  kLow0,
  kLow1,
  kSeen,
  kClonalPlaneCount
};

// Bit planes of the markers of one category: word w of plane p of the marker at a position (from 0) stands at
// bits[(p * words + w) * stride + position]. Positions are readable up to kCountLanes behind the last.
struct ClonalPlanes {
  int32_t category = 0;
  std::vector<int32_t> markers;  // one-based, ascending
  size_t words = 0, stride = 0;
  std::vector<uint64_t> bits;
};

// One store for each category that occurs.
std::vector<ClonalPlanes> MakeClonalPlanes(const Genotypes& data);

// Adds to a count the lines that show one plane at the first and one at the second marker.
struct ClonalTerm {
  uint8_t count, first, second;
};
struct ClonalTerms {  // in ascending order of their counts, every count from 0 on
  std::array<ClonalTerm, 13> term{};
  size_t size = 0;
};

using ClonalCounts = std::array<std::array<int32_t, kClonalRun>, kMostCounts>;

// counts[k][t] for the row marker's words (word w of plane p at [p * words + w]) with the store's position
// from + t, up to position to, kClonalRun at most. Behind the last pair, zeros up to kMostLanes.
void CountClonal(Level level, const ClonalTerms& terms, bool rowFirst, const uint64_t* rowWords,
                 const ClonalPlanes& store, size_t from, size_t to, ClonalCounts& counts);

}  // namespace recombination

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "recombination/clonal_lanes.h"
#include "recombination/pair_tables.h"

namespace recombination {

inline constexpr size_t kClonalRun = 1024;  // neighbouring markers taken together in a row
inline constexpr size_t kMarkerBlock = 16;  // markers of one mask

// The four classes of a letter; the gamete of the AB parent, then of the CD parent; classes 0 and 3;
// any class.
enum ClonalPlane : uint8_t {
  kClass0,
  kClass1,
  kClass2,
  kClass3,
  kHigh0,
  kHigh1,
  kLow0,
  kLow1,
  kOuter,
  kSeen,
  kClonalPlaneCount
};

struct alignas(64) PlaneLine {  // what a vector of words loads at once
  std::array<uint64_t, 8> word{};
};

// Bit planes of the markers of one category: word w of plane p of the marker at a position (from 0) stands at
// Bits()[(p * words + w) * stride + position]. Positions are readable up to kCountLanes behind the last.
struct ClonalPlanes {
  int32_t category = 0;          // 0: all that a cross cannot have
  std::vector<int32_t> markers;  // one-based, ascending
  size_t words = 0, stride = 0;
  std::vector<PlaneLine> lines;
  const uint64_t* Bits() const { return reinterpret_cast<const uint64_t*>(lines.data()); }
  uint64_t* Bits() { return reinterpret_cast<uint64_t*>(lines.data()); }
  // The project's markers in blocks: which are of this store, and how many of it stand before the block.
  std::vector<uint16_t> mask;
  std::vector<uint32_t> before;
};

// One store for each category that occurs.
std::vector<ClonalPlanes> MakeClonalPlanes(const Genotypes& data);

// A count: the lines that show one plane at the first and one at the second marker, and those of another two planes,
// which no line has along with the first two.
struct PlanePair {
  uint8_t first, second;
};
struct ClonalTerm {
  PlanePair one, other;  // other.first: kClonalPlaneCount for none
};
struct ClonalTerms {  // one a count
  std::array<ClonalTerm, kMostCounts> term{};
  size_t size = 0;
};

using ClonalCounts = std::array<std::array<int32_t, kClonalRun>, kMostCounts>;

// counts[k][t] for the row marker's words (word w of plane p at [p * words + w]) with the store's position
// from + t, up to position to, kClonalRun at most. Behind the last pair, zeros up to kMostLanes.
void CountClonal(Level level, const ClonalTerms& terms, bool rowFirst, const uint64_t* rowWords,
                 const ClonalPlanes& store, size_t from, size_t to, ClonalCounts& counts);

}  // namespace recombination

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "recombination/pair_tables.h"

namespace recombination {

// Genotypes as bits. The planes tell the classes of a pair table apart; the last one holds the letter H alone
// and serves the crossovers where dominance codes stand beside it.
enum Plane : size_t { kA, kHalf, kB, kHet, kPlanes };  // A; H, D or R; B; H

// Bit planes of the markers of one category. Word w of plane p of the store's marker at position m (from 0)
// stands at bits[(p * words + w) * stride + m]: neighbouring markers are neighbours in memory, so that one
// row of pairs is counted in vector lanes. Positions up to stride are readable.
struct PlaneStore {
  int32_t category = 0;
  std::vector<int32_t> markers;  // one-based, ascending
  size_t words = 0, stride = 0;
  std::array<bool, kPlanes> present{};  // whether any marker has a bit in the plane
  bool reduced = false;                 // some marker has D or R
  bool complete = true;                 // no line is missing at any marker
  std::vector<uint64_t> bits;

  const uint64_t* At(size_t plane) const { return bits.data() + plane * words * stride; }
};

// One store for each category that occurs, categories in order of first occurrence.
std::vector<PlaneStore> MakePlanes(const Genotypes& data);

inline constexpr size_t kCountLanes = 8;

// counts[m - from] = number of bits that the row's words share with position m of a plane, for from <= m <
// to. from is a multiple of kCountLanes; counts are written up to the next one behind to.
void CountRow(Level level, const uint64_t* row, const uint64_t* plane, size_t words, size_t stride,
              size_t from, size_t to, uint32_t* counts);

}  // namespace recombination

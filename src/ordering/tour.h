#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "ordering/distances.h"

namespace ordering {

// A tour as the kernels hold it: laid out from city 1 on, read cyclically. Position k carries the edge from
// city[k] to city[k + 1].
struct Tour {
  std::int32_t n = 0;
  Places<City> city;        // one-based; city[0] is the last city and city[n + 1] the first
  Places<std::int32_t> at;  // one-based: position of a city
  Places<float> edge;       // one-based
  Places<City> scratch;
};

// What a move does to the two blocks of cities behind its removed edges: B stands behind position i, C behind
// position j up to position k. Row r - 1 belongs to case r. A two-edge move (i, j) is case 2 with an empty C.
struct MoveRow {
  bool swapped, reverseB, reverseC;
};
inline constexpr std::array<MoveRow, 7> kMoves{{{false, false, true},
                                                {false, true, false},
                                                {true, true, true},
                                                {true, false, false},
                                                {true, true, false},
                                                {false, true, true},
                                                {true, false, true}}};

struct Move {
  float gain = 0;
  std::int32_t i = 0, j = 0, k = 0;  // positions of the removed edges; k = j in a two-edge move
  int number = 0;                    // case
  float pathLength = 0;              // exact kernels only: what the move gives
};

// The four longest edges of a tour, longest first: V and, in place of their pairs, their positions.
struct TopEdges {
  float length[5] = {};  // one-based, 0 where n is below 4
  std::int32_t place[5] = {};
};

// Longest edge that survives the removal of the edges at positions p, q and r (0 where there is no third).
inline float Survivor(const TopEdges& top, std::int32_t p, std::int32_t q, std::int32_t r) {
  for (int slot = 1; slot < 4; ++slot) {
    const std::int32_t place = top.place[slot];
    if (place != p && place != q && place != r) return top.length[slot];
  }
  return top.length[4];
}

// Lays cities[n], any cyclic order of 1..n, out from city 1 on.
template <class Rows>
void LoadTour(const Rows& rows, std::int32_t n, const City* cities, Tour& tour);

// Writes the cities after the move to target[n] (zero-based), from city 1 on.
void CitiesAfter(const Tour& tour, const Move& move, City* target);

template <class Rows>
void ApplyMove(const Rows& rows, const Move& move, Tour& tour);

// Of a tour with numbers for distances. The order of equal edges is left open: no gain depends on it.
TopEdges FindTopEdges(const Tour& tour);
// The same through the fixed sort over the cities, for tables with values that cannot be compared.
TopEdges SortTopEdges(const Tour& tour);

// Sum of the edges of cities[n], the closing one first and then from cities[1] on, and the longest edge.
struct Length {
  float sum, longest;
};
template <class Rows>
Length TourLength(const Rows& rows, std::int32_t n, const City* cities) {
  const float closing = rows(cities[n - 1], cities[0]);
  Length length{closing, closing};
  for (std::int32_t i = 0; i + 1 < n; ++i) {
    const float edge = rows(cities[i], cities[i + 1]);
    length.sum += edge;
    if (edge > length.longest) length.longest = edge;
  }
  return length;
}

// The length of the open path that is left when the longest edge is cut.
template <class Rows>
float PathLength(const Rows& rows, std::int32_t n, const City* cities) {
  const Length length = TourLength(rows, n, cities);
  return length.sum - length.longest;
}

// Rotates the tour so that it begins behind its longest edge; the closing edge wins a tie, then the first.
void CutAtLongestEdge(std::int32_t n, const float* dist, City* tour);

}  // namespace ordering

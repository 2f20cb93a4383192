#include "ordering/tour.h"

#include <algorithm>
#include <iterator>
#include <numeric>

#include "stats/sorts.h"

namespace ordering {
namespace {

// Copies positions first..last, backwards if reversed, and returns the end of the copy.
City* CopyBlock(const Tour& tour, std::int32_t first, std::int32_t last, bool reversed, City* target) {
  const auto begin = tour.city.begin() + first, end = tour.city.begin() + last + 1;
  return reversed ? std::reverse_copy(begin, end, target) : std::copy(begin, end, target);
}

City* CopyBlocks(const Tour& tour, const Move& move, City* target) {
  const MoveRow& row = kMoves[static_cast<std::size_t>(move.number) - 1];
  if (row.swapped) target = CopyBlock(tour, move.j + 1, move.k, row.reverseC, target);
  target = CopyBlock(tour, move.i + 1, move.j, row.reverseB, target);
  if (!row.swapped) target = CopyBlock(tour, move.j + 1, move.k, row.reverseC, target);
  return target;
}

void CloseTour(Tour& tour) {
  tour.city[0] = tour.city[tour.n];
  tour.city[tour.n + 1] = tour.city[1];
}

}  // namespace

template <class Rows>
void LoadTour(const Rows& rows, std::int32_t n, const City* cities, Tour& tour) {
  tour.n = n;
  tour.city.resize(static_cast<std::size_t>(n) + 2);
  tour.at.resize(static_cast<std::size_t>(n) + 1);
  tour.edge.resize(static_cast<std::size_t>(n) + 1);
  tour.scratch.resize(static_cast<std::size_t>(n));
  const City* first = std::find(cities, cities + n, 1);
  std::rotate_copy(cities, first, cities + n, tour.city.begin() + 1);
  CloseTour(tour);
  for (std::int32_t k = 1; k <= n; ++k) {
    tour.at[tour.city[k]] = k;
    tour.edge[k] = n > 1 ? rows(tour.city[k], tour.city[k + 1]) : 0;
  }
}

void CitiesAfter(const Tour& tour, const Move& move, City* target) {
  target = CopyBlock(tour, 1, move.i, false, target);
  target = CopyBlocks(tour, move, target);
  CopyBlock(tour, move.k + 1, tour.n, false, target);
}

template <class Rows>
void ApplyMove(const Rows& rows, const Move& move, Tour& tour) {
  const auto city = tour.city.begin();
  const auto edge = tour.edge.begin();
  if (move.j == move.k) {  // a block turned round keeps its edges
    std::reverse(city + move.i + 1, city + move.j + 1);
    std::reverse(edge + move.i + 1, edge + move.j);
  } else {
    CopyBlocks(tour, move, tour.scratch.data());
    std::copy_n(tour.scratch.begin(), move.k - move.i, city + move.i + 1);
    for (std::int32_t p = move.i + 1; p < move.k; ++p) edge[p] = rows(city[p], city[p + 1]);
  }
  CloseTour(tour);
  edge[move.i] = rows(city[move.i], city[move.i + 1]);
  edge[move.k] = rows(city[move.k], city[move.k + 1]);
  for (std::int32_t p = move.i + 1; p <= move.k; ++p) tour.at[city[p]] = p;
}

TopEdges FindTopEdges(const Tour& tour) {
  TopEdges top;
  const std::int32_t slots = std::min(tour.n, 4);
  std::fill_n(top.length + 1, slots, -1.0F);
  for (std::int32_t p = 1; p <= tour.n; ++p) {
    const float length = tour.edge[p];
    if (!(length > top.length[slots])) continue;
    int slot = slots;
    for (; slot > 1 && length > top.length[slot - 1]; --slot) {
      top.length[slot] = top.length[slot - 1];
      top.place[slot] = top.place[slot - 1];
    }
    top.length[slot] = length;
    top.place[slot] = p;
  }
  return top;
}

TopEdges SortTopEdges(const Tour& tour) {
  Places<float> length(static_cast<std::size_t>(tour.n));
  Places<std::int32_t> city(static_cast<std::size_t>(tour.n));
  std::iota(city.begin(), city.end(), 1);
  std::transform(city.begin(), city.end(), length.begin(),
                 [&tour](City c) { return -tour.edge[tour.at[c]]; });
  stats::SVRGP(tour.n, length.data(), length.data(), city.data());
  TopEdges top;
  for (std::int32_t slot = 1; slot <= std::min(tour.n, 4); ++slot) {
    top.length[slot] = -length[slot - 1];
    top.place[slot] = tour.at[city[slot - 1]];
  }
  return top;
}

void CutAtLongestEdge(std::int32_t n, const float* dist, City* tour) {
  const TriangleRows rows{dist};
  float longest = rows(tour[n - 1], tour[0]);
  std::int32_t cut = n;
  for (std::int32_t i = 1; i < n; ++i) {
    const float length = rows(tour[i - 1], tour[i]);
    if (length > longest) {
      cut = i;
      longest = length;
    }
  }
  std::rotate(tour, tour + cut % n, tour + n);
}

template void LoadTour(const DenseRows&, std::int32_t, const City*, Tour&);
template void LoadTour(const TriangleRows&, std::int32_t, const City*, Tour&);
template void ApplyMove(const DenseRows&, const Move&, Tour&);
template void ApplyMove(const TriangleRows&, const Move&, Tour&);

}  // namespace ordering

#include "ordering/full_scan.h"

#include <algorithm>

#include "ordering/gains.h"

namespace ordering {
namespace {

template <class Rows>
struct Scan {
  const Rows& rows;
  const Tour& tour;
  TopEdges top;        // path kernels only
  float length;        // exact kernels only
  Places<City> after;  // exact kernels only
};

template <class Rows>
Scan<Rows> Begin(const Rows& rows, Judge judge, const Tour& tour, float length) {
  Scan<Rows> scan{rows, tour, {}, length, {}};
  if (judge == Judge::Path) scan.top = SortTopEdges(tour);
  if (judge == Judge::Exact) scan.after.resize(static_cast<std::size_t>(tour.n));
  return scan;
}

// Judges a case by building it; fills pathLength and gain.
template <class Rows>
void Build(Scan<Rows>& scan, Move& move) {
  CitiesAfter(scan.tour, move, scan.after.data());
  move.pathLength = PathLength(scan.rows, scan.tour.n, scan.after.data());
  move.gain = scan.length - move.pathLength;
}

// Gain of replacing the edges at positions i < j by the two that turn the block between them round.
template <class Rows>
float CycleGain(const Scan<Rows>& scan, std::int32_t i, std::int32_t j) {
  const auto& city = scan.tour.city;
  return scan.tour.edge[i] + scan.tour.edge[j] - scan.rows(city[i], city[j]) -
         scan.rows(city[i + 1], city[j + 1]);
}

template <class Rows>
float PathGain(const Scan<Rows>& scan, std::int32_t i, std::int32_t j, bool inThree) {
  const auto& city = scan.tour.city;
  const float x1 = scan.tour.edge[i], x2 = scan.tour.edge[j], v = scan.top.length[1];
  const float y1 = scan.rows(city[i], city[j]), y2 = scan.rows(city[i + 1], city[j + 1]);
  const float survivor = Survivor(scan.top, i, j, 0);
  return inThree ? PairInThreeGain(x1, x2, v, y1, y2, survivor) : TwoOptPathGain(x1, x2, v, y1, y2, survivor);
}

template <class Rows>
void CycleGains(const Scan<Rows>& scan, std::int32_t i, std::int32_t j, std::int32_t k, Move* moves) {
  const auto& city = scan.tour.city;
  const Rows& rows = scan.rows;
  const City a = city[i], b = city[i + 1], c = city[j], d = city[j + 1], e = city[k], f = city[k + 1];
  const float removed = scan.tour.edge[i] + scan.tour.edge[j] + scan.tour.edge[k];
  moves[0].gain = CycleGain(scan, j, k);
  moves[1].gain = CycleGain(scan, i, j);
  moves[2].gain = CycleGain(scan, i, k);
  moves[3].gain = removed - rows(a, d) - rows(b, e) - rows(c, f);
  moves[4].gain = removed - rows(a, d) - rows(b, f) - rows(c, e);
  moves[5].gain = removed - rows(a, c) - rows(b, e) - rows(d, f);
  moves[6].gain = removed - rows(a, e) - rows(b, d) - rows(c, f);
}

template <class Rows>
void PathGains(const Scan<Rows>& scan, std::int32_t i, std::int32_t j, std::int32_t k, Move* moves) {
  moves[0].gain = PathGain(scan, j, k, true);
  moves[1].gain = PathGain(scan, i, j, true);
  moves[2].gain = PathGain(scan, i, k, true);
  const PureGains pure = PureThreeGains(scan.rows, scan.tour, scan.top, i, j, k);
  for (int number = 4; number <= 7; ++number) moves[number - 1].gain = pure.gain[number - 4];
}

template <class Rows>
Move BestOfSeven(Scan<Rows>& scan, Judge judge, std::int32_t i, std::int32_t j, std::int32_t k) {
  Move moves[7];
  for (int number = 1; number <= 7; ++number) moves[number - 1] = Move{0, i, j, k, number, 0};
  switch (judge) {
    case Judge::Cycle:
      CycleGains(scan, i, j, k, moves);
      break;
    case Judge::Exact:
      for (Move& move : moves) Build(scan, move);
      break;
    case Judge::Path:
      PathGains(scan, i, j, k, moves);
      break;
  }
  int best = 0;
  for (int at = 1; at < 7; ++at) {
    if (moves[at].gain > moves[best].gain) best = at;
  }
  return moves[best];
}

}  // namespace

template <class Rows>
Move FullScanTwo(const Rows& rows, Judge judge, const Tour& tour, float length) {
  Scan<Rows> scan = Begin(rows, judge, tour, length);
  Move best;
  for (std::int32_t i = 1; i <= tour.n - 2; ++i) {
    // The edges at positions 1 and n touch at city 1.
    const std::int32_t last = i == 1 ? tour.n - 1 : tour.n;
    for (std::int32_t j = i + 2; j <= last; ++j) {
      Move move{0, i, j, j, 2, 0};
      switch (judge) {
        case Judge::Cycle:
          move.gain = CycleGain(scan, i, j);
          break;
        case Judge::Exact:
          Build(scan, move);
          break;
        case Judge::Path:
          move.gain = PathGain(scan, i, j, false);
          break;
      }
      if (move.gain > best.gain) best = move;
    }
  }
  return best;
}

template <class Rows>
Move FullScanThree(const Rows& rows, Judge judge, const Tour& tour, float length) {
  Scan<Rows> scan = Begin(rows, judge, tour, length);
  Move best;
  for (std::int32_t i = 1; i <= tour.n - 4; ++i) {
    const std::int32_t last = i == 1 ? tour.n - 1 : tour.n;
    for (std::int32_t j = i + 2; j <= last - 2; ++j) {
      for (std::int32_t k = j + 2; k <= last; ++k) {
        const Move move = BestOfSeven(scan, judge, i, j, k);
        if (move.gain > best.gain) best = move;
      }
    }
  }
  return best;
}

template Move FullScanTwo(const DenseRows&, Judge, const Tour&, float);
template Move FullScanTwo(const TriangleRows&, Judge, const Tour&, float);
template Move FullScanThree(const DenseRows&, Judge, const Tour&, float);
template Move FullScanThree(const TriangleRows&, Judge, const Tour&, float);

}  // namespace ordering

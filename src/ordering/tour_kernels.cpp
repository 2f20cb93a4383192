#include "ordering/tour_kernels.h"

#include <algorithm>
#include <bit>

#include "ordering/path_search.h"

namespace ordering {
namespace {

// A kernel stops after this many moves a city: with very large distances rounding can make moves repeat for
// ever. No run that ends by itself comes near.
constexpr std::int64_t kMovesPerCity = 1000;

std::uint64_t Mix(std::uint64_t x) {  // the finisher of the splitmix64 generator
  x = (x ^ (x >> 30U)) * 0xbf58476d1ce4e5b9U;
  x = (x ^ (x >> 27U)) * 0x94d049bb133111ebU;
  return x ^ (x >> 31U);
}

// The sum over the edges at positions first to last.
TourHash HashOf(const SeenTours& seen, const Tour& tour, std::int32_t first, std::int32_t last) {
  TourHash hash{0, 0};
  for (std::int32_t p = first; p <= last; ++p) {
    const auto& front = seen.weights[tour.city[p]];
    const auto& rear = seen.weights[tour.city[p + 1]];
    hash.first += front[0] * rear[1];
    hash.second += front[2] * rear[3];
  }
  return hash;
}

template <class Rows>
Move BestMove(const Rows& rows, const Distances& d, Kernel kernel, const Tour& tour, float length) {
  if (kernel.judge == Judge::Path && d.tame && tour.n >= kSmallestSearch) {
    return SearchPathMove(rows, d, tour, kernel.three);
  }
  return kernel.three ? FullScanThree(rows, kernel.judge, tour, length)
                      : FullScanTwo(rows, kernel.judge, tour, length);
}

void RunAlone(std::int32_t n, const float* dist, City* tour, Kernel kernel) {
  if (n < 2) return;
  const Distances d = PrepareDistances(n, dist);
  Tour work;
  SeenTours seen = EmptySeenTours(n);
  if (d.dense.empty()) {
    RunKernel(TriangleRows{dist}, d, kernel, tour, work, seen);
  } else {
    RunKernel(DenseRows{d.dense.data(), static_cast<std::size_t>(n)}, d, kernel, tour, work, seen);
  }
}

}  // namespace

SeenTours EmptySeenTours(std::int32_t n) {
  SeenTours seen;
  seen.weights.resize(static_cast<std::size_t>(n) + 1);
  std::uint64_t state = 0;
  for (auto& weights : seen.weights) {
    for (std::uint64_t& weight : weights) weight = Mix(state += 0x9e3779b97f4a7c15U) | 1U;
  }
  return seen;
}

template <class Rows>
bool RunKernel(const Rows& rows, const Distances& d, Kernel kernel, City* tour, Tour& work, SeenTours& seen) {
  float length = kernel.judge == Judge::Exact ? PathLength(rows, d.n, tour) : 0;
  LoadTour(rows, d.n, tour, work);
  const std::int64_t allowed = kMovesPerCity * d.n;
  std::int64_t limit = allowed, marked = 0, moves = 0;
  TourHash mark{0, 0};  // the tour after `marked` moves, a power of two
  bool circles = false;
  // The limit counts the moves of one run, so only runs that stay far from it may stand for one another; and
  // an exact kernel starts from a length that is rounded in the order of the given tour.
  const bool remembers = kernel.judge != Judge::Exact;
  seen.passed.clear();
  TourHash hash = HashOf(seen, work, 1, work.n);
  for (; moves < limit; ++moves) {
    if (remembers && moves < allowed / 2 && !circles) {
      const bool met = seen.seen.contains(hash);
      if (met) seen.seen.insert(seen.passed.begin(), seen.passed.end());
      if (met) return false;
      seen.passed.push_back(hash);
    }
    if (!circles && marked > 0 && hash == mark) {  // moves repeat for ever: leave out whole rounds
      circles = true;
      limit = moves + (allowed - moves) % (moves - marked);
      if (moves == limit) break;
    }
    if (!circles && std::has_single_bit(static_cast<std::uint64_t>(moves))) {
      mark = hash;
      marked = moves;
    }
    const Move move = BestMove(rows, d, kernel, work, length);
    if (!(move.gain > kSmallestGain)) break;
    const TourHash before = HashOf(seen, work, move.i, move.k);
    ApplyMove(rows, move, work);
    const TourHash after = HashOf(seen, work, move.i, move.k);
    hash = {hash.first + after.first - before.first, hash.second + after.second - before.second};
    length = move.pathLength;
  }
  if (remembers && moves < allowed / 2 && !circles) seen.seen.insert(seen.passed.begin(), seen.passed.end());
  std::copy_n(work.city.begin() + 1, d.n, tour);
  return true;
}

void TwoOptCycle(std::int32_t n, const float* dist, City* tour) {
  RunAlone(n, dist, tour, {Judge::Cycle, false});
}
void ThreeOptCycle(std::int32_t n, const float* dist, City* tour) {
  RunAlone(n, dist, tour, {Judge::Cycle, true});
}
void TwoOptPathExact(std::int32_t n, const float* dist, City* tour) {
  RunAlone(n, dist, tour, {Judge::Exact, false});
}
void ThreeOptPathExact(std::int32_t n, const float* dist, City* tour) {
  RunAlone(n, dist, tour, {Judge::Exact, true});
}
void TwoOptPath(std::int32_t n, const float* dist, City* tour) {
  RunAlone(n, dist, tour, {Judge::Path, false});
}
void ThreeOptPath(std::int32_t n, const float* dist, City* tour) {
  RunAlone(n, dist, tour, {Judge::Path, true});
}

template bool RunKernel(const DenseRows&, const Distances&, Kernel, City*, Tour&, SeenTours&);
template bool RunKernel(const TriangleRows&, const Distances&, Kernel, City*, Tour&, SeenTours&);

}  // namespace ordering

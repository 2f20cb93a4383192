#include "ordering/driver.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <vector>

#include "ordering/start_tour.h"
#include "ordering/tour.h"
#include "ordering/tour_kernels.h"
#include "stats/generator.h"

namespace ordering {
namespace {

constexpr std::int32_t kAllCities = 0;

struct SizeRow {
  std::int32_t largest;      // n up to this, from the row before on
  std::int32_t repetitions;  // or kAllCities
  std::int32_t method;
};
constexpr SizeRow kSizes[] = {
    {150, kAllCities, 6},
    {200, kAllCities, 17},
    {500, kAllCities, 5},
    {1000, 200, 5},
    {1500, 100, 5},
    {2000, 50, 5},
    {3000, 20, 5},
    {5000, 10, 5},
    {6000, 5, 5},
    {7000, 2, 5},
    {std::numeric_limits<std::int32_t>::max(), 1, 5},
};

constexpr Kernel kTwoOptCycle{Judge::Cycle, false}, kThreeOptCycle{Judge::Cycle, true};
constexpr Kernel kTwoOptPathExact{Judge::Exact, false}, kThreeOptPathExact{Judge::Exact, true};
constexpr Kernel kTwoOptPath{Judge::Path, false}, kThreeOptPath{Judge::Path, true};

struct MethodRow {
  int count;
  Kernel kernels[2];
};
constexpr MethodRow kNoKernel{0, {}};
constexpr MethodRow kMethods[17] = {
    {1, {kTwoOptCycle}},
    {1, {kThreeOptCycle}},
    {1, {kTwoOptPathExact}},
    {1, {kThreeOptPathExact}},
    {1, {kTwoOptPath}},
    {1, {kThreeOptPath}},
    {2, {kTwoOptCycle, kThreeOptCycle}},
    {2, {kTwoOptCycle, kTwoOptPathExact}},
    {2, {kTwoOptCycle, kThreeOptPathExact}},
    {2, {kThreeOptCycle, kTwoOptPathExact}},
    {2, {kThreeOptCycle, kThreeOptPathExact}},
    {2, {kTwoOptPathExact, kThreeOptPathExact}},
    {2, {kTwoOptCycle, kTwoOptPath}},
    {2, {kTwoOptCycle, kThreeOptPath}},
    {2, {kThreeOptCycle, kTwoOptPath}},
    {2, {kThreeOptCycle, kThreeOptPath}},
    {2, {kTwoOptPath, kThreeOptPath}},
};

// Runs the kernels on tour[n]: false if one meets a tour that an earlier repetition has passed through there.
template <class Rows>
bool Improve(const Rows& rows, const Distances& d, const MethodRow& method, City* tour, Tour& work,
             std::vector<SeenTours>& seen) {
  for (int step = 0; step < method.count; ++step) {
    if (!RunKernel(rows, d, method.kernels[step], tour, work, seen[static_cast<std::size_t>(step)]))
      return false;
  }
  return true;
}

// The tour with the shortest open path of all repetitions, the first of equals, in order. Where no tour has
// a length (infinite or undefined distances) the order is 1..n.
template <class Rows>
void BestTour(const Rows& rows, const Distances& d, const std::vector<City>& starts, const MethodRow& method,
              City* order) {
  std::vector<City> tour(static_cast<std::size_t>(d.n));
  std::vector<std::int32_t> place(static_cast<std::size_t>(d.n) + 1);
  std::vector<SeenTours> seen(2, EmptySeenTours(d.n));  // by step of the kernel sequence
  Tour work;
  std::iota(order, order + d.n, 1);
  float best = std::numeric_limits<float>::infinity();
  for (const City start : starts) {
    NearestNeighbourTour(rows, d, start, tour.data(), place.data());
    if (!Improve(rows, d, method, tour.data(), work, seen)) continue;
    const float length = PathLength(rows, d.n, tour.data());
    if (length < best) {
      best = length;
      std::copy(tour.begin(), tour.end(), order);
    }
  }
}

}  // namespace

Plan PlanFor(std::int32_t n) {
  const SizeRow* row = kSizes;
  while (n > row->largest) ++row;
  return {row->repetitions == kAllCities ? n : row->repetitions, row->method};
}

void NnTwoOpt(std::int32_t n, const float* dist, std::int32_t* order, const std::int32_t* method) {
  const stats::GeneratorState saved = stats::SaveGenerator();
  stats::SeedGeneratorFromClock();  // no result depends on it: a sample of all n takes every index
  std::vector<City> starts(static_cast<std::size_t>(std::max(n, 1)));
  const bool sampled = stats::RNSRI(n, n, starts.data());
  stats::RestoreGenerator(saved);
  if (!sampled) return;
  order[0] = 1;
  if (n == 1) return;
  const Plan plan = method == nullptr ? PlanFor(n) : Plan{n, *method};
  const bool known = plan.method >= 1 && plan.method <= 17;
  const MethodRow& kernels = known ? kMethods[plan.method - 1] : kNoKernel;
  starts.resize(static_cast<std::size_t>(plan.repetitions));
  const Distances d = PrepareDistances(n, dist);
  if (d.dense.empty()) {
    BestTour(TriangleRows{dist}, d, starts, kernels, order);
  } else {
    BestTour(DenseRows{d.dense.data(), static_cast<std::size_t>(n)}, d, starts, kernels, order);
  }
  // For 201 to 500 markers a pass of TwoOptPathExact over a copy of the order belongs here by definition. Its
  // result goes nowhere, so it is left out.
  CutAtLongestEdge(n, dist, order);
}

}  // namespace ordering

#include "ordering/start_tour.h"

#include <limits>
#include <numeric>
#include <utility>
#include <vector>

namespace ordering {
namespace {

// Position (zero-based, i or later) of the city that follows `from`, from the list of its nearest cities: the
// highest position among the nearest that are still free. -1 where the list does not decide it.
std::int32_t FromList(const Distances& d, City from, std::int32_t i, const std::int32_t* place) {
  const City* near = d.Near(from);
  const float* length = d.NearLength(from);
  for (std::int32_t m = 0; m < d.listed; ++m) {
    if (place[near[m]] < i) continue;
    if (!(length[m] < d.reach[from])) return -1;  // an equal city may be unlisted
    std::int32_t found = place[near[m]];
    for (std::int32_t other = m + 1; other < d.listed && length[other] == length[m]; ++other) {
      found = std::max(found, place[near[other]]);
    }
    return found;
  }
  return -1;
}

template <class Rows>
std::int32_t FromScan(const Rows& rows, std::int32_t n, std::int32_t i, const City* tour) {
  float shortest = std::numeric_limits<float>::infinity();
  std::int32_t found = i;  // stays where no distance is a number
  for (std::int32_t j = i; j < n; ++j) {
    const float length = rows(tour[i - 1], tour[j]);
    if (length <= shortest) {
      shortest = length;
      found = j;
    }
  }
  return found;
}

}  // namespace

template <class Rows>
void NearestNeighbourTour(const Rows& rows, const Distances& d, City start, City* tour, std::int32_t* place) {
  std::iota(tour, tour + d.n, 1);
  std::iota(place + 1, place + d.n + 1, 0);
  std::swap(tour[0], tour[start - 1]);
  std::swap(place[1], place[start]);
  for (std::int32_t i = 1; i < d.n; ++i) {
    std::int32_t found = d.tame ? FromList(d, tour[i - 1], i, place) : -1;
    if (found < 0) found = FromScan(rows, d.n, i, tour);
    std::swap(tour[i], tour[found]);
    place[tour[found]] = found;
    place[tour[i]] = i;
  }
}

void NearestNeighbourTour(std::int32_t n, const float* dist, City start, City* tour) {
  const Distances d = PrepareDistances(n, dist);
  std::vector<std::int32_t> place(static_cast<std::size_t>(n) + 1);
  NearestNeighbourTour(TriangleRows{dist}, d, start, tour, place.data());
}

template void NearestNeighbourTour(const DenseRows&, const Distances&, City, City*, std::int32_t*);
template void NearestNeighbourTour(const TriangleRows&, const Distances&, City, City*, std::int32_t*);

}  // namespace ordering

#include "ordering/anchor_order.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <vector>

#include "ordering/distances.h"
#include "ordering/driver.h"

namespace ordering {
namespace {

struct FreeMarker {
  City marker;
  float nearest;  // distance to the nearest anchor
};

// The free markers k + 1..n in the order of their insertion: by the distance to the nearest anchor, equal
// ones by number. Those at no distance below the limit come last, by number.
std::vector<FreeMarker> InsertionOrder(const TriangleRows& rows, std::int32_t n, std::int32_t k) {
  constexpr float kLimit = 1.0e10F;
  std::vector<FreeMarker> near, far;
  for (City x = k + 1; x <= n; ++x) {
    float nearest = rows(x, 1);
    for (City anchor = 2; anchor <= k; ++anchor) nearest = std::min(nearest, rows(x, anchor));
    (nearest < kLimit ? near : far).push_back({x, nearest});
  }
  std::stable_sort(near.begin(), near.end(),
                   [](const FreeMarker& a, const FreeMarker& b) { return a.nearest < b.nearest; });
  near.insert(near.end(), far.begin(), far.end());
  return near;
}

// The path as it grows. sum[p] is the length from its first marker to that at position p, added up in order.
struct GrowingPath {
  std::vector<City> marker;
  std::vector<float> edge;  // edge[p] leads from position p to p + 1; the last is 0
  std::vector<float> sum;
};

// Position (zero-based) at which x lengthens the path least; the first of equals.
std::size_t CheapestPlace(const TriangleRows& rows, const GrowingPath& path, City x) {
  const float length = path.sum.back();
  const std::size_t m = path.marker.size();
  float best = std::numeric_limits<float>::infinity();
  std::size_t place = 0;
  float before = 0;  // from x to the marker in front of the place
  for (std::size_t p = 0; p <= m; ++p) {
    const float behind = p < m ? rows(x, path.marker[p]) : 0;
    const float cost = p == 0   ? length + behind
                       : p == m ? length + before
                                : behind + (before + (length - path.edge[p - 1]));
    if (cost < best) {
      best = cost;
      place = p;
    }
    before = behind;
  }
  return place;
}

void Insert(const TriangleRows& rows, GrowingPath& path, City x, std::size_t place) {
  const auto at = static_cast<std::ptrdiff_t>(place);
  path.marker.insert(path.marker.begin() + at, x);
  path.edge.insert(path.edge.begin() + at, 0);
  path.sum.push_back(0);
  const std::size_t m = path.marker.size();
  for (const std::size_t p :
       {place - 1, place}) {  // the edges on both sides of x; place - 1 wraps at the front
    if (p < m - 1) path.edge[p] = rows(path.marker[p], path.marker[p + 1]);
  }
  for (std::size_t p = std::max<std::size_t>(place, 1); p < m; ++p)
    path.sum[p] = path.sum[p - 1] + path.edge[p - 1];
}

}  // namespace

void InsertByAnchors(std::int32_t n, const float* dist, std::int32_t* order) {
  const auto k =
      n < 1 ? 0 : static_cast<std::int32_t>(std::count_if(order, order + n, [](City i) { return i > 0; }));
  for (std::int32_t i = 1; i <= k; ++i) {
    if (order[i - 1] == i) continue;
    std::iota(order, order + n, 1);
    return;
  }
  if (k == n) return;
  if (k < 3) {
    NnTwoOpt(n, dist, order);
    return;
  }
  const TriangleRows rows{dist};
  GrowingPath path{{1}, {0}, {0}};
  path.marker.reserve(static_cast<std::size_t>(n));
  for (City anchor = 2; anchor <= k; ++anchor) Insert(rows, path, anchor, path.marker.size());
  for (const FreeMarker& next : InsertionOrder(rows, n, k)) {
    Insert(rows, path, next.marker, CheapestPlace(rows, path, next.marker));
  }
  std::copy(path.marker.begin(), path.marker.end(), order);
}

}  // namespace ordering

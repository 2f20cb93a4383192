#include "ordering/distances.h"

#include <algorithm>
#include <limits>

namespace ordering {
namespace {

constexpr std::int32_t kListed = 64;
constexpr std::int64_t kTile = 64;  // a tile of 64 x 64 floats and its mirror image fit the first cache

void FillDense(std::int64_t n, const float* dist, float* dense) {
  for (std::int64_t rowTile = 0; rowTile < n; rowTile += kTile) {
    for (std::int64_t columnTile = 0; columnTile <= rowTile; columnTile += kTile) {
      for (std::int64_t i = rowTile; i < std::min(n, rowTile + kTile); ++i) {
        const float* row = dist + recombination::PairCount(i);
        for (std::int64_t j = columnTile; j < std::min(i, columnTile + kTile); ++j) {
          dense[i * n + j] = dense[j * n + i] = row[j];
        }
      }
    }
  }
}

template <class Rows>
void ListNearest(const Rows& rows, Distances& d) {
  d.listed = std::min(kListed, d.n - 1);
  const auto places = static_cast<std::size_t>(d.n) * static_cast<std::size_t>(d.listed);
  d.near.resize(places);
  d.nearLength.resize(places);
  d.reach.assign(static_cast<std::size_t>(d.n) + 1, std::numeric_limits<float>::infinity());
  d.nearest.assign(static_cast<std::size_t>(d.n) + 1, 0);
  for (City c = 1; c <= d.n; ++c) {
    City* near = d.near.data() + static_cast<std::ptrdiff_t>(c - 1) * d.listed;
    float* length = d.nearLength.data() + static_cast<std::ptrdiff_t>(c - 1) * d.listed;
    std::int32_t count = 0;
    for (City other = 1; other <= d.n; ++other) {
      if (other == c) continue;
      const float distance = rows(c, other);
      if (count == d.listed && !(distance < length[count - 1])) continue;
      std::int32_t at = count < d.listed ? count++ : count - 1;
      for (; at > 0 && length[at - 1] > distance; --at) {
        length[at] = length[at - 1];
        near[at] = near[at - 1];
      }
      length[at] = distance;
      near[at] = other;
    }
    if (d.listed < d.n - 1) d.reach[c] = length[count - 1];
    d.nearest[c] = length[0];
  }
}

}  // namespace

Distances PrepareDistances(std::int32_t n, const float* dist) {
  Distances d;
  d.n = n;
  d.triangle = dist;
  d.tame = true;
  const std::int64_t pairs = recombination::PairCount(n);
  for (std::int64_t i = 0; i < pairs; ++i) {
    d.tame &= dist[i] >= 0 && dist[i] < kTameLimit;
    d.longest = std::max(d.longest, dist[i]);
  }
  if (n <= kDenseLimit) {
    d.dense.resize(static_cast<std::size_t>(n) * static_cast<std::size_t>(n));
    FillDense(n, dist, d.dense.data());
  }
  if (d.tame && n > 1) {
    if (d.dense.empty()) {
      ListNearest(TriangleRows{dist}, d);
    } else {
      ListNearest(DenseRows{d.dense.data(), static_cast<std::size_t>(n)}, d);
    }
  }
  return d;
}

}  // namespace ordering

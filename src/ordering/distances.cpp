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

// Cities with their distances from one.
struct Candidates {
  std::vector<City> city;
  std::vector<float> length;
  std::int32_t count = 0;
};

// All other cities below the limit.
template <class Row>
void TakeBelow(const Row& from, City c, std::int32_t n, float limit, Candidates& taken) {
  City* const city = taken.city.data();
  float* const length = taken.length.data();
  std::int32_t count = 0;
  const auto take = [&](City other) {
    city[count] = other;
    length[count] = from(other);
    count += length[count] < limit ? 1 : 0;  // no branch that cannot be foretold
  };
  for (City other = 1; other < c; ++other) take(other);
  for (City other = c + 1; other <= n; ++other) take(other);
  taken.count = count;
}

// A distance below which about half as many cities again lie as are listed, by every so many of them.
template <class Row>
float GuessReach(const Row& from, City c, std::int32_t n, std::int32_t listed) {
  constexpr std::int32_t kAsked = 64;
  float asked[kAsked];
  for (std::int32_t k = 0; k < kAsked; ++k) {
    const City other = 1 + k * (n / kAsked);
    asked[k] = from(other != c ? other : other + 1);
  }
  const std::int32_t rank = 2 + kAsked * 3 * listed / (2 * n);
  std::nth_element(asked, asked + rank, asked + kAsked);
  return asked[rank];
}

// Sorts the nearest into the list of a city.
void InsertNearest(const Candidates& from, std::int32_t listed, City* near, float* length) {
  std::int32_t count = 0;
  for (std::int32_t k = 0; k < from.count; ++k) {
    const float distance = from.length[static_cast<std::size_t>(k)];
    if (count == listed && !(distance < length[count - 1])) continue;
    std::int32_t at = count < listed ? count++ : count - 1;
    for (; at > 0 && length[at - 1] > distance; --at) {
      length[at] = length[at - 1];
      near[at] = near[at - 1];
    }
    length[at] = distance;
    near[at] = from.city[static_cast<std::size_t>(k)];
  }
}

template <class Rows>
void ListNearest(const Rows& rows, Distances& d) {
  constexpr float kAll = std::numeric_limits<float>::infinity();
  d.listed = std::min(kListed, d.n - 1);
  const auto places = static_cast<std::size_t>(d.n) * static_cast<std::size_t>(d.listed);
  d.near.resize(places);
  d.nearLength.resize(places);
  d.reach.assign(static_cast<std::size_t>(d.n) + 1, kAll);
  d.nearest.assign(static_cast<std::size_t>(d.n) + 1, 0);
  const auto room = static_cast<std::size_t>(d.n);
  Candidates candidates{std::vector<City>(room), std::vector<float>(room)};
  const bool many = d.n >= 2 * d.listed;
  for (City c = 1; c <= d.n; ++c) {
    const auto from = rows.From(c);
    TakeBelow(from, c, d.n, many ? GuessReach(from, c, d.n, d.listed) : kAll, candidates);
    if (candidates.count < d.listed) TakeBelow(from, c, d.n, kAll, candidates);
    float* const length = d.nearLength.data() + static_cast<std::ptrdiff_t>(c - 1) * d.listed;
    InsertNearest(candidates, d.listed, d.near.data() + static_cast<std::ptrdiff_t>(c - 1) * d.listed,
                  length);
    if (d.listed < d.n - 1) d.reach[c] = length[d.listed - 1];
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

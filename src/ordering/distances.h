#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "ordering/places.h"
#include "recombination/pair_index.h"

namespace ordering {

using City = std::int32_t;  // 1..n, the row of the city in the distance table

// The two layouts of a distance table. Both are asked as rows(a, b), in any order of two different cities, or
// as rows.From(a) for many distances of one city.
struct DenseRows {
  const float* base;  // n rows of n
  std::size_t n;
  struct Row {
    const float* of;  // city 1
    float operator()(City b) const { return of[b - 1]; }
  };
  Row From(City a) const { return {base + (static_cast<std::size_t>(a) - 1) * n}; }
  float operator()(City a, City b) const { return From(a)(b); }
};
struct TriangleRows {
  const float* base;  // pair array, in the order of PairIndex
  struct Row {
    const float* base;
    City a;
    float operator()(City b) const { return base[recombination::PairIndex(a, b) - 1]; }
  };
  Row From(City a) const { return {base, a}; }
  float operator()(City a, City b) const { return From(a)(b); }
};

// What one call of the driver or of a kernel prepares from its distance table.
struct Distances {
  std::int32_t n = 0;
  const float* triangle = nullptr;
  std::vector<float> dense;  // n x n, or empty where the pair array itself serves
  float longest = 0;         // largest distance; only where tame
  bool tame = false;         // every distance is a finite number of no sign below kTameLimit
  // The `listed` nearest cities of every city, nearest first, and their distances; only where tame.
  // All cities nearer than reach[c] are in the list of c.
  std::int32_t listed = 0;
  std::vector<City> near;
  std::vector<float> nearLength;
  Places<float> reach;    // one-based
  Places<float> nearest;  // one-based: distance to the nearest city

  const City* Near(City c) const {
    return &near[(static_cast<std::size_t>(c) - 1) * static_cast<std::size_t>(listed)];
  }
  const float* NearLength(City c) const {
    return &nearLength[(static_cast<std::size_t>(c) - 1) * static_cast<std::size_t>(listed)];
  }
};

// Above this many cities a dense table would cost more (over 256 MB) than the one or two repetitions gain.
inline constexpr std::int32_t kDenseLimit = 8000;
// Sums of tours stay finite below this length, and rounding errors can be bounded.
inline constexpr float kTameLimit = 1e30F;

Distances PrepareDistances(std::int32_t n, const float* dist);

}  // namespace ordering

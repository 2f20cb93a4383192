#pragma once

#include <algorithm>

#include "ordering/tour.h"

namespace ordering {

// Gains of the path kernels. The order of every sum decides ties and is kept as it stands; `v` is the longest
// edge before the move and `survivor` the longest edge that stays.

inline float TwoOptPathGain(float x1, float x2, float v, float y1, float y2, float survivor) {
  return x1 + x2 - v - y1 - y2 + std::max(std::max(survivor, y1), y2);
}

inline float PairInThreeGain(float x1, float x2, float v, float y1, float y2, float survivor) {
  return x1 - v + x2 - y1 - y2 + std::max(std::max(survivor, y1), y2);
}

// `removed` is x1 - v + x2 + x3, `longest` the longest of the survivor and the three added edges.
inline float ThreeGain(float removed, float y1, float y2, float y3, float longest) {
  return removed - y1 - y2 - y3 + longest;
}

inline float Longest(float survivor, float y1, float y2, float y3) {
  return std::max(std::max(std::max(survivor, y1), y2), y3);
}

// Gains of cases 4 to 7 for the edges at positions i < j < k, no two of them touching.
struct PureGains {
  float gain[4];
};
template <class Rows>
PureGains PureThreeGains(const Rows& rows, const Tour& tour, const TopEdges& top, std::int32_t i,
                         std::int32_t j, std::int32_t k) {
  const City a = tour.city[i], b = tour.city[i + 1], c = tour.city[j], d = tour.city[j + 1], e = tour.city[k],
             f = tour.city[k + 1];
  const float ac = rows(a, c), ad = rows(a, d), ae = rows(a, e), bd = rows(b, d), be = rows(b, e);
  const float bf = rows(b, f), ce = rows(c, e), cf = rows(c, f), df = rows(d, f);
  const float removed = tour.edge[i] - top.length[1] + tour.edge[j] + tour.edge[k];
  const float survivor = Survivor(top, i, j, k);
  return {{ThreeGain(removed, ad, be, cf, Longest(survivor, ad, be, cf)),
           ThreeGain(removed, ce, bf, ad, Longest(survivor, ad, bf, ce)),
           ThreeGain(removed, df, ac, be, Longest(survivor, ac, be, df)),
           ThreeGain(removed, bd, ae, cf, Longest(survivor, ae, bd, cf))}};
}

}  // namespace ordering

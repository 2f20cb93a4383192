#pragma once

#include <utility>

#include "recombination/lane_math.h"
#include "recombination/layouts.h"

// Two-locus models of the six populations that show A, H and B. Frequencies are of the coupling phase, r is
// the recombination frequency, s = 1 - r, q = r s.
namespace recombination {

// The six distinct cells of a co-dominant table, T3, T6 and T7 being equal to T1, T2 and T5: value, first and
// second derivative in r.
template <class R>
struct Curves {
  R p[kCurves], d[kCurves], e[kCurves];  // cells 0, 1, 2, 4, 5, 8
};

template <class R>
inline void Set(Curves<R>& c, size_t k, const R& p, const R& d, const R& e) {
  c.p[k] = p;
  c.d[k] = d;
  c.e[k] = e;
}

template <class R>
inline void F2Curves(const R& r, Curves<R>& c) {
  const R s = 1.0f - r;
  Set<R>(c, 0, s * s * 0.25f, s * -0.5f, Splat<R>(0.5f));
  Set<R>(c, 1, r * s * 0.5f, (s - r) * 0.5f, Splat<R>(-1.0f));
  Set<R>(c, 2, r * r * 0.25f, r * 0.5f, Splat<R>(0.5f));
  Set<R>(c, 3, (s * s + r * r) * 0.5f, r - s, Splat<R>(2.0f));
}

template <class R>
inline void F3Curves(const R& r, Curves<R>& c) {
  const R s = 1.0f - r, q = r * s, slope = s - r, both = 1.0f - 2.0f * q;  // slope: dq/dr
  const R r2 = r * r, s2 = s * s;
  Set<R>(c, 0, (r2 * r2 + s2 * s2) * 0.125f + s * 0.25f, (r2 * r - s2 * s) * 0.5f - 0.25f, (r2 + s2) * 1.5f);
  Set<R>(c, 1, q * (1.0f - q) * 0.5f, slope * both * 0.5f, 6.0f * q - 2.0f);
  Set<R>(c, 2, (q * q + r) * 0.25f, (2.0f * q * slope + 1.0f) * 0.25f, (slope * slope - 2.0f * q) * 0.5f);
  Set<R>(c, 3, both * both * 0.25f, -(both * slope), 2.0f * (slope * slope + both));
}

template <class R>
inline void Bc1F2Curves(const R& r, Curves<R>& c) {
  const R s = 1.0f - r, q = r * s, slope = s - r, both = 1.0f - 2.0f * q, s2 = s * s;
  Set<R>(c, 0, 0.5f - r * 0.25f + s2 * s * 0.125f, -0.25f - s2 * 0.375f, s * 0.75f);
  Set<R>(c, 1, r * (s2 + 1.0f) * 0.25f, (s2 - 2.0f * q + 1.0f) * 0.25f, (r - 2.0f * s) * 0.5f);
  Set<R>(c, 2, r * (q + 1.0f) * 0.125f, (2.0f * q - r * r + 1.0f) * 0.125f, (s - 2.0f * r) * 0.25f);
  Set<R>(c, 3, s * both * 0.25f, -(both + 2.0f * s * slope) * 0.25f, 2.0f * s - r);
  Set<R>(c, 4, q * s * 0.25f, (s2 - 2.0f * q) * 0.25f, (r - 2.0f * s) * 0.5f);
  Set<R>(c, 5, s2 * s * 0.125f, s2 * -0.375f, s * 0.75f);
}

// Cells 1 and 2 are 1/8 - (s + r^2) s^2 / 8 and 1/16 - (1 - r^2) s^2 / 16, here with the factor r set free.
template <class R>
inline void Bc2F2Curves(const R& r, Curves<R>& c) {
  const R s = 1.0f - r, q = r * s, slope = s - r, both = 1.0f - 2.0f * q, s2 = s * s;
  const R one = 1.0f - q;  // s + r^2
  const R free = 1.0f - r * r;
  Set<R>(c, 0, s2 * 0.125f + 0.625f + s2 * s2 * 0.0625f, (s + s2 * s) * -0.25f, 0.25f + s2 * 0.75f);
  Set<R>(c, 1, r * (1.0f + s + s2 - q * s) * 0.125f, (slope * s2 + 2.0f * s * one) * 0.125f,
         (s2 + 2.0f * s * slope + one) * -0.25f);
  Set<R>(c, 2, r * (1.0f + s + q * s) * 0.0625f, (q * s + s * free) * 0.125f,
         (s2 - 4.0f * q - free) * 0.125f);
  Set<R>(c, 3, both * s2 * 0.125f, (slope * s2 + s * both) * -0.25f,
         (2.0f * s2 + 4.0f * s * slope + both) * 0.25f);
  Set<R>(c, 4, q * s2 * 0.125f, (s - 3.0f * r) * s2 * 0.125f, s * slope * -0.75f);
  Set<R>(c, 5, s2 * s2 * 0.0625f, s2 * s * -0.25f, s2 * 0.75f);
}

template <class R, int32_t kPopulation>
inline void CurvesAt(const R& r, Curves<R>& c) {
  if constexpr (kPopulation == 7) F2Curves<R>(r, c);
  if constexpr (kPopulation == 8) F3Curves<R>(r, c);
  if constexpr (kPopulation == 13 || kPopulation == 14) Bc1F2Curves<R>(r, c);
  if constexpr (kPopulation == 15 || kPopulation == 16) Bc2F2Curves<R>(r, c);
  if constexpr (Symmetric(kPopulation)) {
    Set<R>(c, 4, c.p[1], c.d[1], c.e[1]);
    Set<R>(c, 5, c.p[0], c.d[0], c.e[0]);
  } else if constexpr (kPopulation == 14 || kPopulation == 16) {
    for (R* values : {c.p, c.d, c.e}) {  // the mirror image: cell k is cell 8 - k of the P1 population
      std::swap(values[0], values[5]);
      std::swap(values[1], values[4]);
    }
  }
}

// Frequency of one shown class from the curves.
template <class R, size_t kIndex, size_t kClass, size_t kFrom = 0>
inline R Fold(const R* curve) {
  constexpr Shown kShown = kLayout[kIndex].shown[kClass];
  constexpr int kWeight = kShown.weight[kFrom];
  constexpr bool kMore = [kShown] {
    bool more = false;
    for (size_t k = kFrom + 1; k < kCurves; ++k) more = more || kShown.weight[k] != 0;
    return more;
  }();
  if constexpr (kWeight == 0) {
    return Fold<R, kIndex, kClass, kFrom + 1>(curve);
  } else {
    const R term = kWeight == 2 ? curve[kFrom] + curve[kFrom] : curve[kFrom];
    if constexpr (kMore) {
      return term + Fold<R, kIndex, kClass, kFrom + 1>(curve);
    } else {
      return term;
    }
  }
}

// A derivative of one shown class from those of the curves.
template <class R, size_t kIndex, size_t kClass>
inline R FoldSlope(const R* curve) {
  constexpr Shown kShown = kLayout[kIndex].shown[kClass];
  return kShown.against ? -curve[kShown.curve] : curve[kShown.curve];
}

// Runs body<class>() for the classes of a layout in order.
template <size_t kIndex, class F>
inline void EachClass(F body) {
  [&]<size_t... kClass>(std::index_sequence<kClass...>) {
    (body(std::integral_constant<size_t, kClass>{}), ...);
  }
  (std::make_index_sequence<kLayout[kIndex].count>{});
}

// Counts of the shown classes. Cells of one frequency are added up before any other sum, so that tables which
// the model cannot tell apart have the same results to the bit.
template <class R, size_t kIndex>
inline void MergeCells(const R* table, R* counts) {
  EachClass<kIndex>([&](auto shown) {
    R sum{};
    [&]<size_t... kCell>(std::index_sequence<kCell...>) {
      ((sum = (kLayout[kIndex].shown[shown()].cells >> kCell & 1U) != 0 ? sum + table[kCell] : sum), ...);
    }
    (std::make_index_sequence<9>{});
    counts[shown()] = sum;
  });
}

// Required as it stands: the second derivative of the F3 for a dominant and a recessive marker, with the
// plain w where the analytic one has its square. counts are those of T3 + T7, T4 and T6.
template <class R>
inline R F3DominantRecessiveSecond(const R* counts, const R& r) {
  const R r2 = r * r, r3 = r2 * r;
  const R u = r + r2 - 2.0f * r3 + r2 * r2;
  const R w = -1.0f - 2.0f * r + 6.0f * r2 - 4.0f * r3;
  const R e = 12.0f * (r2 - r) + 2.0f;
  const R t = 1.5f - u, p = u + 1.0f;
  const R f = 1.0f + r + r3 - 2.0f * r2, g = 1.0f - 4.0f * r + 3.0f * r2;
  return counts[0] * (w - e * t) / (t * t) - counts[2] / r2 +
         (counts[2] / (f * f)) * ((6.0f * r - 4.0f) * f - g * g) + (w + e * p) * counts[1] / (p * p);
}

// First and second derivative of the natural-log likelihood, the second as the sum of P''/P less that of
// (P'/P)^2: near a bound the first sum can cancel, and the step of Newton's method must not become 0/0 then.
template <class R, int32_t kPopulation, size_t kIndex>
inline void Derivatives(const R* counts, const R& r, R& first, R& second) {
  Curves<R> c;
  CurvesAt<R, kPopulation>(r, c);
  first = R{};
  R bend{}, squares{};
  EachClass<kIndex>([&](auto shown) {
    constexpr size_t kClass = decltype(shown)::value;
    const R inverse = 1.0f / Fold<R, kIndex, kClass>(c.p);
    const R slope = FoldSlope<R, kIndex, kClass>(c.d) * inverse;
    first = first + counts[kClass] * slope;
    bend = bend + counts[kClass] * (FoldSlope<R, kIndex, kClass>(c.e) * inverse);
    squares = squares + counts[kClass] * (slope * slope);
  });
  second = bend - squares;
  if constexpr (kPopulation == 8 && kLayout[kIndex].code == 1210) {
    second = F3DominantRecessiveSecond<R>(counts, r);
  }
}

// Log likelihood in common logarithms; classes whose frequency is not above 0 contribute nothing.
template <class R, int32_t kPopulation, size_t kIndex>
inline R LikelihoodAt(const R* counts, const R& r) {
  Curves<R> c;
  CurvesAt<R, kPopulation>(r, c);
  R sum{};
  EachClass<kIndex>([&](auto shown) {
    constexpr size_t kClass = decltype(shown)::value;
    const R p = Fold<R, kIndex, kClass>(c.p);
    sum = sum + Select<R>(p > 0.0f, counts[kClass] * LogOf<R, true>(p), R{});
  });
  return sum;
}

}  // namespace recombination

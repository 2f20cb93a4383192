#pragma once

#include "recombination/selfing_models.h"

// Estimators of the selfing populations over lanes: closed forms, Newton's method, both phases, LOD.
namespace recombination {

// Newton's bounds and its start values for lack of a better one.
inline constexpr float kStep = 1e-6f, kLowest = 1e-6f, kHighest = 0.999999f, kNoCandidate = 1e-5f;
inline constexpr int kMostIterations = 100;

template <class R>
inline R FourthRoot(const R& x) {
  return Sqrt<R>(Sqrt<R>(x));
}

// Mean over those that are numbers.
template <class R>
inline R MeanOf(const R& a, const R& b) {
  const Mask<R> hasA = IsNumber<R>(a), hasB = IsNumber<R>(b);
  const R one = Select<R>(hasA, a, Select<R>(hasB, b, Splat<R>(kNoCandidate)));
  return Select<R>(hasA & hasB, (a + b) * 0.5f, one);
}

// Start of Newton's method for two markers of which none is co-dominant, before the clamp.
template <class R, int32_t kPopulation>
inline R DominantStart(int32_t code, const R* t, const R& n) {
  if constexpr (kPopulation == 8) {
    if (code == 1212) return 1.0f - 4.0f * t[8] / n;
    if (code == 1210) return 4.0f * t[6] / n;
    return MeanOf<R>(1.0f - Sqrt<R>(4.0f * (1.0f - (t[1] + t[3] + t[4]) / n)),
                     1.0f - Sqrt<R>(4.0f * t[0] / n));
  } else if constexpr (kPopulation == 13 || kPopulation == 14) {
    if (code == 1212) return 1.0f - Cbrt<R>(4.0f * (t[4] + t[8]) / n - 3.0f);
    if (code == 1210) return 8.0f * ((t[4] - t[6]) / n - 0.125f);
    return 1.0f - Cbrt<R>(4.0f * (t[0] + t[4]) / n - 3.0f);
  } else if constexpr (kPopulation == 15) {
    if (code == 1212) return 2.0f * FourthRoot<R>(t[8] / n);
    if (code == 1210) return t[6] / n;
    return MeanOf<R>(1.0f - Sqrt<R>(Sqrt<R>(8.0f * (0.5f - (t[1] + t[3]) / n)) - 1.0f),
                     1.0f - Sqrt<R>(Sqrt<R>(8.0f * (t[0] + t[4]) / n - 4.0f) - 1.0f));
  } else if constexpr (kPopulation == 16) {
    if (code == 1212) return 1.0f - t[8] / n;
    if (code == 1210) return t[6] / n;
    return MeanOf<R>(1.0f - 2.0f * FourthRoot<R>(1.0f - (t[4] + t[1] + t[3]) / n),
                     2.0f * FourthRoot<R>(1.0f - t[0] / n));
  } else {
    return Splat<R>(kLowest);
  }
}

template <class R, int32_t kPopulation>
inline R StartOf(int32_t code, const R* t, const R& n) {
  R start = Splat<R>(kLowest);
  if (code == 11) {
    start = (t[2] + t[6] + (t[1] + t[3] + t[5] + t[7]) * 0.5f) / (n - t[4]);
  } else if (code == 112) {
    start = (t[5] * 0.5f + t[2]) / (n - t[1] - t[4] - t[7]);
  } else if (code == 110) {
    start = (t[3] * 0.5f + t[6]) / (n - t[1] - t[4] - t[7]);
  } else if (code == 1212 || code == 1210 || code == 1010) {
    start = DominantStart<R, kPopulation>(code, t, n);
  }
  start = Select<R>(start > 0.0f, start, Splat<R>(kLowest));
  return Select<R>(start >= 1.0f, Splat<R>(kHighest), start);
}

// Newton's method with a first overshoot bisected toward the bound and a later one ending on it. A lane whose
// frequency is not a number can only stay so, and stops at once.
template <class R, int32_t kPopulation, size_t kIndex>
inline R Newton(const R* counts, R r) {
  const R zero = Splat<R>(0.0f), one = Splat<R>(1.0f);
  R estimate = r;
  Mask<R> running = IsNumber<R>(r);
  for (int iteration = 1; Any<R>(running); ++iteration) {
    R first, second;
    Derivatives<R, kPopulation, kIndex>(counts, r, first, second);
    const R next = r - first / second;
    const Mask<R> over = next > kHighest, under = next<kLowest, upward = second> 0.0f;
    const R bounded = Select<R>(over, one, Select<R>(under, zero, next));
    const R down = r * 0.5f, up = (r + 1.0f) * 0.5f;
    const R away =
        Select<R>(upward, Select<R>(r <= 0.5f, down, up), Select<R>(over, up, Select<R>(under, down, next)));
    Mask<R> ended = (Abs<R>(next - r) < kStep) | Not<R>(IsNumber<R>(next) | upward);
    Mask<R> onBound = upward & ((r > kHighest) | (r < kLowest));
    if (iteration > kMostIterations) ended = ended | Not<R>(ended);
    if (iteration > 1) onBound = onBound | (Not<R>(upward) & (over | under));
    const R bound = Select<R>(upward, Select<R>(r > kHighest, one, zero), bounded);
    const R stopped = Select<R>(ended, bounded, bound);
    const Mask<R> stops = running & (ended | onBound);
    estimate = Select<R>(stops, stopped, estimate);
    running = running & Not<R>(stops);
    r = Select<R>(running, away, r);
  }
  return estimate;
}

// Closed forms of the F2.
template <class R>
inline R F2DominantRec(int32_t code, const R* t, const R& n) {
  if (code == 1210) {
    const R v = 2.0f * t[4] - t[3] - t[7] - n;
    return Sqrt<R>((v + Sqrt<R>(8.0f * t[6] * n + v * v)) / (2.0f * n));
  }
  const R& corner = code == 1212 ? t[8] : t[0];
  const R v = 2.0f * n - 3.0f * t[4] - corner;
  return 1.0f - Sqrt<R>((Sqrt<R>(8.0f * n * corner + v * v) - v) / (2.0f * n));
}

// Coupling estimate of one table, transposed where due, n its sum.
template <class R, int32_t kPopulation, size_t kIndex>
inline R RecOf(const R* table, const R& n) {
  constexpr int32_t kCode = kLayout[kIndex].code;
  if constexpr (kPopulation == 7 && kCode > 1000) {
    return F2DominantRec<R>(kCode, table, n);
  } else {
    R counts[6];
    MergeCells<R, kIndex>(table, counts);
    return Newton<R, kPopulation, kIndex>(counts, StartOf<R, kPopulation>(kCode, table, n));
  }
}

template <class R, int32_t kPopulation, size_t kIndex>
inline R LodOf(const R* table, const R& rec) {
  R counts[6];
  MergeCells<R, kIndex>(table, counts);
  const float* logs = HalfLogs(kPopulation, kIndex);
  R atHalf{};
  for (size_t k = 0; k < kLayout[kIndex].count; ++k) atHalf = atHalf + counts[k] * logs[k];
  return LikelihoodAt<R, kPopulation, kIndex>(counts, rec) - atHalf;
}

// The better phase of lanes with observations, without its standard error.
template <class R, int32_t kPopulation, size_t kIndex>
inline void BothPhases(const R* table, const R& n, R& rec, R& lod) {
  constexpr Flip kFlip = FlipOf(kLayout[kIndex].code);
  constexpr size_t kOther = LayoutOf(kPopulation, kFlip.code);
  R flipped[9];
  for (size_t k = 0; k < 9; ++k) flipped[k] = table[kFlip.from[k]];
  const R coupling = RecOf<R, kPopulation, kIndex>(table, n);
  const R repulsion = RecOf<R, kPopulation, kOther>(flipped, n);
  const Mask<R> flip = coupling > repulsion;
  rec = Select<R>(flip, 1.0f - repulsion, coupling);
  if constexpr (kOther == kIndex) {  // one sum of logarithms serves
    for (size_t k = 0; k < 9; ++k) flipped[k] = Select<R>(flip, flipped[k], table[k]);
    lod = LodOf<R, kPopulation, kIndex>(flipped, Select<R>(flip, repulsion, coupling));
  } else {
    lod = Select<R>(flip, LodOf<R, kPopulation, kOther>(flipped, repulsion),
                    LodOf<R, kPopulation, kIndex>(table, coupling));
  }
}

// Calls body with the population and the layout as constants; false for a pair that has no model.
template <class F>
inline bool WithModel(int32_t population, int32_t pairCode, F body) {
  const size_t layout = LayoutOf(population, pairCode);
  bool done = false;
  const auto forPopulation = [&]<int32_t kPopulation>(std::integral_constant<int32_t, kPopulation> known) {
    [&]<size_t... kIndex>(std::index_sequence<kIndex...>) {
      const auto one = [&]<size_t kOne>(std::integral_constant<size_t, kOne> index) {
        if constexpr (LayoutOf(kPopulation, kLayout[kOne].code) == kOne) {
          if (layout == kOne) {
            body(known, index);
            done = true;
          }
        }
      };
      (one(std::integral_constant<size_t, kIndex>{}), ...);
    }
    (std::make_index_sequence<kLayouts>{});
  };
  switch (population) {
    case 7:
      forPopulation(std::integral_constant<int32_t, 7>{});
      break;
    case 8:
      forPopulation(std::integral_constant<int32_t, 8>{});
      break;
    case 13:
      forPopulation(std::integral_constant<int32_t, 13>{});
      break;
    case 14:
      forPopulation(std::integral_constant<int32_t, 14>{});
      break;
    case 15:
      forPopulation(std::integral_constant<int32_t, 15>{});
      break;
    case 16:
      forPopulation(std::integral_constant<int32_t, 16>{});
      break;
    default:
      break;
  }
  return done;
}

}  // namespace recombination

#pragma once

#include <cstring>

#include "recombination/lane_math.h"
#include "recombination/multi_parent_lanes.h"

// The models of populations of four and eight parents over lanes: frequencies, the next estimate, LOD.
namespace recombination {

inline constexpr float kSettled = 1e-6f;  // change of the estimate, distance of a class from uniform

// Frequency of a cell of each kind that occurs. None is above 1 for r in 0 to 1.
template <class R, int32_t kPopulation>
inline void KindFrequencies(const R& r, R* frequency) {
  const R s = 1.0f - r;
  if constexpr (kPopulation == k4PDH) {
    frequency[0] = s * s * 0.25f;
    frequency[1] = r * s * 0.25f;
    frequency[3] = r * 0.125f;
  } else if constexpr (kPopulation == k4PRIL) {
    frequency[0] = 0.25f - 3.0f * r * 0.125f;
    frequency[3] = r * 0.125f;
  } else if constexpr (kPopulation == k8PDH) {
    frequency[0] = s * s * s * 0.125f;
    frequency[1] = r * s * s * 0.125f;
    frequency[2] = r * s * 0.0625f;
    frequency[3] = r * 0.03125f;
  } else {
    const R f = 1.0f + 2.0f * r;
    frequency[0] = s * s / (8.0f * f);
    frequency[1] = r * s / (8.0f * f);
    frequency[3] = r / (16.0f * f);
  }
}

constexpr bool Occurs(int32_t population, size_t kind) {
  return kind == 0 || kind == 3 || population == k8PDH || (kind == 1 && population != k4PRIL);
}
// Whether the expected count of a kind enters a population's next estimate.
constexpr bool Needed(int32_t population, size_t kind) { return kind < 3 && Occurs(population, kind); }

// Frequency of a class from its numbers of cells.
template <class R, int32_t kPopulation>
inline R ClassFrequency(const R* cells, const R* frequency) {
  R sum = cells[0] * frequency[0];
  if constexpr (Occurs(kPopulation, 1)) sum = sum + cells[1] * frequency[1];
  if constexpr (Occurs(kPopulation, 2)) sum = sum + cells[2] * frequency[2];
  return sum + cells[3] * frequency[3];
}

template <class R>
struct StepCounts {
  R a, b;
};
template <class R, int32_t kPopulation>
inline StepCounts<R> CountsOf(const R* expected, const R& n) {
  const R a = n - expected[0];
  if constexpr (kPopulation == k4PDH) {
    return {a, expected[1] + 2.0f * expected[0]};
  } else if constexpr (kPopulation == k4PRIL) {
    return {expected[0], a};
  } else if constexpr (kPopulation == k8PDH) {
    return {a, 2.0f * expected[1] + expected[2] + 3.0f * expected[0]};
  } else {
    return {a, expected[1] + 2.0f * a};  // required as it stands
  }
}

// A bit a lane.
template <class R>
inline uint32_t MaskBits(const Mask<R>& mask) {
#if defined(__x86_64__)
  if constexpr (kLanes<R> == 4) {
    return static_cast<uint32_t>(_mm_movemask_ps(__builtin_bit_cast(__m128, mask)));
  } else if constexpr (kLanes<R> == 8) {
    return static_cast<uint32_t>(_mm256_movemask_ps(__builtin_bit_cast(__m256, mask)));
  } else if constexpr (kLanes<R> == 16) {
    return static_cast<uint32_t>(_mm512_movepi32_mask(__builtin_bit_cast(__m512i, mask)));
  }
#endif
  const auto lanes = __builtin_bit_cast(LaneArray<R, int32_t>, mask);
  uint32_t bits = 0;
  for (size_t k = 0; k < kLanes<R>; ++k) bits |= static_cast<uint32_t>(lanes.value[k] < 0) << k;
  return bits;
}

// The bytes of half the lanes in double, a type of its own for each R.
template <class R>
struct HalfArray {
  double value[sizeof(R) / sizeof(double)];
};
template <class R, class D>
inline D SqrtOfDoubles(const D& x) {
#if defined(__x86_64__)
  if constexpr (sizeof(D) == 16) {
    return _mm_sqrt_pd(x);
  } else if constexpr (sizeof(D) == 32) {
    return _mm256_sqrt_pd(x);
  } else if constexpr (sizeof(D) == 64) {
    return _mm512_maskz_sqrt_pd(0xff, x);
  }
#endif
  auto lanes = __builtin_bit_cast(HalfArray<R>, x);
  for (double& value : lanes.value) value = std::sqrt(value);
  return __builtin_bit_cast(D, lanes);
}

// The halves of a vector and back, without a way through memory.
template <class R, int kHalf>
inline auto HalfOfLanes(const R& x) {
  if constexpr (kLanes<R> == 4) {
    return __builtin_shufflevector(x, x, 2 * kHalf, 2 * kHalf + 1);
  } else if constexpr (kLanes<R> == 8) {
    return __builtin_shufflevector(x, x, 4 * kHalf, 4 * kHalf + 1, 4 * kHalf + 2, 4 * kHalf + 3);
  } else {
    return __builtin_shufflevector(x, x, 8 * kHalf, 8 * kHalf + 1, 8 * kHalf + 2, 8 * kHalf + 3,
                                   8 * kHalf + 4, 8 * kHalf + 5, 8 * kHalf + 6, 8 * kHalf + 7);
  }
}
template <class R, class Half>
inline R JoinedLanes(const Half& low, const Half& high) {
  if constexpr (kLanes<R> == 4) {
    return __builtin_shufflevector(low, high, 0, 1, 2, 3);
  } else if constexpr (kLanes<R> == 8) {
    return __builtin_shufflevector(low, high, 0, 1, 2, 3, 4, 5, 6, 7);
  } else {
    return __builtin_shufflevector(low, high, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
  }
}

template <class R, int kHalf>
inline auto SmallerRoots(const R& a, const R& b, const R& c) {
  using Floats = typename HalfOf<kLanes<R>>::Floats;
  using Doubles = typename HalfOf<kLanes<R>>::Doubles;
  const Doubles x = __builtin_convertvector(HalfOfLanes<R, kHalf>(a), Doubles),
                y = __builtin_convertvector(HalfOfLanes<R, kHalf>(b), Doubles),
                z = __builtin_convertvector(HalfOfLanes<R, kHalf>(c), Doubles);
  const Doubles root = SqrtOfDoubles<R, Doubles>(y * y - 4.0 * x * z);
  return __builtin_convertvector(z / (-0.5 * (y - root)), Floats);
}

// QuadraticRecRoot over lanes, for the counts that occur here: b is below -2 n and the discriminant above 3 n^2,
// so that two real roots lie apart, and the one nearer to 0, by the same operations as there, is the only one
// that can lie in 0 to 0.5.
template <class R>
inline R QuadraticRecRoots(const R& a, const R& b, const R& c) {
  const R found = JoinedLanes<R>(SmallerRoots<R, 0>(a, b, c), SmallerRoots<R, 1>(a, b, c));
  const R admitted = Select<R>((found >= 0.0f) & (found <= 0.5f), found, Splat<R>(0.5f));
  if (MaskBits<R>(a == 0.0f) == 0) return admitted + 0.0f;
  return Select<R>(a == 0.0f, (0.0f - c) / b, admitted) + 0.0f;
}

template <class R, int32_t kPopulation>
inline R NextRec(const StepCounts<R>& c, const R& n) {
  if constexpr (kPopulation == k4PRIL) {
    return 0.6666667f * c.b / (c.a + c.b);
  } else if constexpr (kPopulation == k8PRIL) {
    return QuadraticRecRoots<R>(2.0f * (n - c.b) - 2.0f * c.a, (c.a - c.b) - 2.0f * n, c.a);
  } else {
    return c.a / (c.a + c.b);
  }
}

// count times log10(p) where p is above 0.
template <class R>
inline R Weighted(const R& count, const R& p) {
  return Select<R>(p > 0.0f, count * LogOf<R, true>(p), R{});
}

template <class R, int32_t kPopulation>
inline R MultiParentLod(const StepCounts<R>& c, const R& n, const R& r) {
  constexpr float kLogHalf = -0.30102999566398119521f;
  // 2 - 3p and p are no frequencies of two classes: required as it stands
  R at = R{} + Weighted<R>(c.a, kPopulation == k4PRIL ? 2.0f - 3.0f * r : r) +
         Weighted<R>(c.b, kPopulation == k4PRIL ? r : 1.0f - r);
  R half = R{} + c.a * kLogHalf + c.b * kLogHalf;
  if constexpr (kPopulation == k8PRIL) {
    at = at + Weighted<R>(n, 1.0f / (2.0f * r + 1.0f));
    half = half + n * kLogHalf;
  }
  return at - half;
}

}  // namespace recombination

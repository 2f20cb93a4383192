#pragma once

#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include "recombination/map_functions.h"
#include "stats/log_lanes.h"
#include "stats/roots.h"

// The estimators are written once, over a type R that is float or a vector of 4, 8 or 16 floats, one pair of
// markers a lane. Every operation is correctly rounded, so that a pair has the same bits in any lane of any
// width. Vectors of more than 4 lanes occur in the files of their instruction set only.
namespace recombination {

template <class R>
inline constexpr bool kScalar = std::same_as<R, float>;

template <class R>
using Mask = decltype(std::declval<R>() < std::declval<R>());

template <class R>
inline constexpr int kLanes = static_cast<int>(sizeof(R) / sizeof(float));

typedef float Float4 __attribute__((vector_size(16)));
typedef float Float8 __attribute__((vector_size(32)));
typedef float Float16 __attribute__((vector_size(64)));

template <class R>
inline R LoadLanes(const float* from) {
  R value;
  std::memcpy(&value, from, sizeof value);
  return value;
}
template <class R>
inline void StoreLanes(float* to, const R& value) {
  std::memcpy(to, &value, sizeof value);
}

// Half the lanes of a vector, in float, in double, and the bits of these.
template <int kLaneCount>
struct HalfOf;
template <>
struct HalfOf<4> {
  typedef float Floats __attribute__((vector_size(8)));
  typedef double Doubles __attribute__((vector_size(16)));
  typedef uint64_t Words __attribute__((vector_size(16)));
};
template <>
struct HalfOf<8> {
  typedef Float4 Floats;
  typedef double Doubles __attribute__((vector_size(32)));
  typedef uint64_t Words __attribute__((vector_size(32)));
};
template <>
struct HalfOf<16> {
  typedef Float8 Floats;
  typedef double Doubles __attribute__((vector_size(64)));
  typedef uint64_t Words __attribute__((vector_size(64)));
};

// The bytes of a vector as an array. A type of its own for each R, so that what works on it is never shared
// between files of different instruction sets.
template <class R, class T>
struct LaneArray {
  T value[sizeof(R) / sizeof(T)];
};

template <class R>
inline R Splat(float value) {
  return R{} + value;
}

template <class R>
inline R Select(const Mask<R>& mask, const R& yes, const R& no) {
  return mask ? yes : no;
}

template <class R>
inline Mask<R> Not(const Mask<R>& mask) {
  if constexpr (kScalar<R>) {
    return !mask;
  } else {
    return ~mask;
  }
}

template <class R>
inline bool Any(const Mask<R>& mask) {
  if constexpr (kScalar<R>) {
    return mask;
  } else {
    const auto lanes = __builtin_bit_cast(LaneArray<R, uint64_t>, mask);
    uint64_t all = 0;
    for (const uint64_t word : lanes.value) all |= word;
    return all != 0;
  }
}

template <class R>
inline Mask<R> IsNumber(const R& x) {
  return (x < 0.0f) | (x >= 0.0f);
}

template <class R>
inline R Abs(const R& x) {
  return Select<R>(x < 0.0f, -x, x);
}

template <class R>
inline R Sqrt(const R& x) {
  if constexpr (kScalar<R>) {
    return std::sqrt(x);
#if defined(__x86_64__)
  } else if constexpr (kLanes<R> == 4) {
    return _mm_sqrt_ps(x);
  } else if constexpr (kLanes<R> == 8) {
    return _mm256_sqrt_ps(x);
  } else if constexpr (kLanes<R> == 16) {
    return _mm512_maskz_sqrt_ps(0xffff, x);
#endif
  } else {
    auto lanes = __builtin_bit_cast(LaneArray<R, float>, x);
    for (float& value : lanes.value) value = std::sqrt(value);
    return __builtin_bit_cast(R, lanes);
  }
}

// A function that changes each half of a vector. The halves stay in registers: in memory, a vector read behind the writing of
// its halves would have to wait for both.
template <class R, class F, size_t... k>
inline R ByHalves(const R& x, F function, std::index_sequence<k...>) {
  constexpr size_t kHalf = sizeof...(k);
  auto low = __builtin_shufflevector(x, x, k...), high = __builtin_shufflevector(x, x, (kHalf + k)...);
  function(low);
  function(high);
  return __builtin_shufflevector(low, high, k..., (kHalf + k)...);
}
template <class R, class F>
inline R ByHalves(const R& x, F function) {
  return ByHalves<R>(x, function, std::make_index_sequence<kLanes<R> / 2>());
}

// Logarithm, common or natural, of positive lanes; other lanes get a value without meaning. A vector goes
// through double in two halves.
template <class R, bool kCommon>
inline R LogOf(const R& x) {
  if constexpr (kScalar<R>) {
    double value;
    stats::LogLanes<double, uint64_t>(static_cast<double>(x), value);
    return static_cast<float>(kCommon ? value * stats::kLog10E : value);
  } else {
    using Floats = typename HalfOf<kLanes<R>>::Floats;
    using Doubles = typename HalfOf<kLanes<R>>::Doubles;
    using Words = typename HalfOf<kLanes<R>>::Words;
    return ByHalves<R>(x, [](Floats& half) {
      Doubles value;
      stats::LogLanes<Doubles, Words>(__builtin_convertvector(half, Doubles), value);
      if constexpr (kCommon) value *= stats::kLog10E;
      half = __builtin_convertvector(value, Floats);
    });
  }
}

// Cube root, odd in x. A vector goes through double in two halves.
template <class R>
inline R Cbrt(const R& x) {
  if constexpr (kScalar<R>) {
    return stats::CBRT(x);
  } else {
    using Floats = typename HalfOf<kLanes<R>>::Floats;
    using Doubles = typename HalfOf<kLanes<R>>::Doubles;
    using Words = typename HalfOf<kLanes<R>>::Words;
    const R size = Abs<R>(x);
    const R root = ByHalves<R>(size, [](Floats& half) {
      Doubles value;
      stats::CbrtLanes<Doubles, Words>(__builtin_convertvector(half, Doubles), value);
      half = __builtin_convertvector(value, Floats);
    });
    const Mask<R> plain = (size > 0.0f) & (size <= 3.4028235e38f);  // others are their own roots
    return Select<R>(plain, Select<R>(x < 0.0f, -root, root), x);
  }
}

// DistanceFromRec over lanes.
template <class R>
inline R DistanceOf(int32_t mapFunction, const R& rec) {
  const R away = Abs<R>(0.5f - rec);
  const R f = 0.5f - away;
  R distance{};
  if (mapFunction == kKosambi) {
    distance = 25.0f * LogOf<R, false>((1.0f + f + f) / (1.0f - f - f));
  } else if (mapFunction == kHaldane) {
    distance = -50.0f * LogOf<R, false>(1.0f - f - f) + 0.0f;  // no negative zero
  } else if (mapFunction == kMorgan) {
    distance = 100.0f * f;
  }
  constexpr float kAtHalf = 1e-8f;  // a frequency this near to 0.5, or not a number, is unlinked
  const Mask<R> linked = (rec >= 0.0f) & (rec <= 1.0f) & (away > kAtHalf);
  return Select<R>(linked, distance, Splat<R>(kUnlinkedDistance));
}

}  // namespace recombination

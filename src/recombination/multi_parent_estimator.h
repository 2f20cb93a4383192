#pragma once

#include <cstring>

#include "recombination/lane_math.h"
#include "recombination/multi_parent_lanes.h"

// The iterated estimate of populations of four and eight parents over lanes. A lane whose pair is done takes
// the next pair, so that slow pairs hold up nobody.
namespace recombination {

enum : int32_t { k4PDH = 1, k4PRIL = 2, k8PDH = 3, k8PRIL = 4 };

// Frequency of a cell of each kind. None is above 1 for r in 0 to 1.
template <class R, int32_t kPopulation>
inline void KindFrequencies(const R& r, R* frequency) {
  const R s = 1.0f - r;
  if constexpr (kPopulation == k4PDH) {
    frequency[0] = s * s * 0.25f;
    frequency[1] = r * s * 0.25f;
    frequency[2] = R{};
    frequency[3] = r * 0.125f;
  } else if constexpr (kPopulation == k4PRIL) {
    frequency[0] = 0.25f - 3.0f * r * 0.125f;
    frequency[1] = frequency[3] = r * 0.125f;
    frequency[2] = R{};
  } else if constexpr (kPopulation == k8PDH) {
    frequency[0] = s * s * s * 0.125f;
    frequency[1] = r * s * s * 0.125f;
    frequency[2] = r * s * 0.0625f;
    frequency[3] = r * 0.03125f;
  } else {
    const R f = 1.0f + 2.0f * r;
    frequency[0] = s * s / (8.0f * f);
    frequency[1] = r * s / (8.0f * f);
    frequency[2] = frequency[3] = r / (16.0f * f);
  }
}

// Whether the expected count of a kind enters a population's next estimate.
constexpr bool Needed(int32_t population, size_t kind) {
  if (population == k4PRIL) return kind == 0;
  return population == k8PDH ? kind <= 2 : kind <= 1;
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
#if defined(__AVX2__)
  } else if constexpr (sizeof(D) == 32) {
    return _mm256_sqrt_pd(x);
#endif
#if defined(__AVX512F__)
  } else if constexpr (sizeof(D) == 64) {
    return _mm512_sqrt_pd(x);
#endif
  }
#endif
  auto lanes = __builtin_bit_cast(HalfArray<R>, x);
  for (double& value : lanes.value) value = std::sqrt(value);
  return __builtin_bit_cast(D, lanes);
}

// QuadraticRecRoot over lanes: the same two roots by the same operations, a half of the lanes at a time.
template <class R>
inline R QuadraticRecRoots(const R& a, const R& b, const R& c) {
  using Floats = typename HalfOf<kLanes<R>>::Floats;
  using Doubles = typename HalfOf<kLanes<R>>::Doubles;
  const auto as = __builtin_bit_cast(LaneArray<R, Floats>, a),
             bs = __builtin_bit_cast(LaneArray<R, Floats>, b),
             cs = __builtin_bit_cast(LaneArray<R, Floats>, c);
  LaneArray<R, Floats> smallest{};
  for (int half = 0; half < 2; ++half) {
    const Doubles x = __builtin_convertvector(as.value[half], Doubles),
                  y = __builtin_convertvector(bs.value[half], Doubles),
                  z = __builtin_convertvector(cs.value[half], Doubles);
    const Doubles discriminant = y * y - 4.0 * x * z;
    const Doubles root = SqrtOfDoubles<R, Doubles>(discriminant < 0.0 ? Doubles{} : discriminant);
    const Doubles q = -0.5 * (y + (y < 0.0 ? -root : root));
    Floats first = __builtin_convertvector(q / x, Floats), second = __builtin_convertvector(z / q, Floats);
    const auto none = __builtin_convertvector(discriminant < 0.0, decltype(first < 0.0f));
    const auto atZero = __builtin_convertvector(q == 0.0, decltype(first < 0.0f));
    second = atZero ? Floats{} : second;
    const Floats one = Floats{} + 1.0f;
    first = ((first >= 0.0f) & (first <= 0.5f) & ~none) ? first : one;
    second = ((second >= 0.0f) & (second <= 0.5f) & ~none) ? second : one;
    smallest.value[half] = second < first ? second : first;
  }
  const R found = __builtin_bit_cast(R, smallest), half = Splat<R>(0.5f);
  const R linear = Select<R>(b == 0.0f, half, (0.0f - c) / b);
  return Select<R>(a == 0.0f, linear, Select<R>(found < half, found, half)) + 0.0f;
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

// What the lanes work on.
template <class R, size_t kMixes>
struct MixLanes {
  float cells[kMixes][kParentKinds][kLanes<R>], counts[kMixes][kLanes<R>], single[kMixes][kLanes<R>];
  float r[kLanes<R>], n[kLanes<R>], uniform[kLanes<R>], iteration[kLanes<R>], a[kLanes<R>], b[kLanes<R>];
  float done[kLanes<R>];
  size_t place[kLanes<R>];
  bool busy[kLanes<R>];
};

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

// One iteration of every lane. done: 1 where the estimate in r is the last.
template <class R, int32_t kPopulation, size_t kMixes>
inline void IterateLanes(MixLanes<R, kMixes>& lanes, size_t mixes) {
  constexpr float kChange = 1e-6f, kMost = 1000;
  const R r = LoadLanes<R>(lanes.r), n = LoadLanes<R>(lanes.n), uniform = LoadLanes<R>(lanes.uniform);
  const R iteration = LoadLanes<R>(lanes.iteration) + 1.0f;
  R frequency[kParentKinds], expected[kParentKinds] = {};
  KindFrequencies<R, kPopulation>(r, frequency);
  Mask<R> alike = R{} <= 0.0f;  // every lane
  for (size_t m = 0; m < mixes; ++m) {
    R cells[kParentKinds], sum{};
    for (size_t k = 0; k < kParentKinds; ++k) {
      cells[k] = LoadLanes<R>(lanes.cells[m][k]);
      if (k != 2 || kPopulation > k4PRIL) sum = sum + cells[k] * frequency[k];
    }
    alike = alike & (Abs<R>(sum - uniform) <= kChange);
    const R count = LoadLanes<R>(lanes.counts[m]);
    const Mask<R> single = LoadLanes<R>(lanes.single[m]) > 0.0f;
    for (size_t k = 0; k < kParentKinds; ++k) {
      if (!Needed(kPopulation, k)) continue;
      const R share = Select<R>(single, count, cells[k] * (frequency[k] / sum * count));
      expected[k] = expected[k] + Select<R>(cells[k] > 0.0f, share, R{});
    }
  }
  const StepCounts<R> c = CountsOf<R, kPopulation>(expected, n);
  const R next = NextRec<R, kPopulation>(c, n);
  const Mask<R> given = alike | (iteration > kMost);
  StoreLanes<R>(lanes.a, c.a);
  StoreLanes<R>(lanes.b, c.b);
  StoreLanes<R>(lanes.iteration, iteration);
  StoreLanes<R>(lanes.r, Select<R>(given, Splat<R>(0.5f), next));
  StoreLanes<R>(lanes.done, Select<R>(given | Not<R>(Abs<R>(next - r) > kChange), Splat<R>(1.0f), R{}));
}

template <class R, size_t kMixes>
inline void TakePair(MixLanes<R, kMixes>& lanes, size_t lane, const MultiParentPair& pair) {
  const MixModel& model = *pair.model;
  float n = 0;
  for (size_t m = 0; m < model.mixes; ++m) {
    float sum = 0;
    for (size_t k = 0; k < kParentKinds; ++k) {
      lanes.cells[m][k][lane] = model.cells[m][k];
      sum += model.cells[m][k];
    }
    lanes.single[m][lane] = sum == 1 ? 1.0f : 0.0f;
    lanes.counts[m][lane] = pair.counts[m];
    n += pair.counts[m];
  }
  lanes.n[lane] = n;
  lanes.uniform[lane] = model.uniform;
  lanes.r[lane] = 0.25f;
  lanes.iteration[lane] = 0;
  lanes.place[lane] = pair.place;
  lanes.busy[lane] = true;
}

// LOD, limits and distance of the lanes that are done.
template <class R, int32_t kPopulation, size_t kMixes>
inline void GiveAnswers(const MultiParentLaneJob& job, MixLanes<R, kMixes>& lanes) {
  const R r = LoadLanes<R>(lanes.r), n = LoadLanes<R>(lanes.n);
  R lod = MultiParentLod<R, kPopulation>({LoadLanes<R>(lanes.a), LoadLanes<R>(lanes.b)}, n, r);
  lod = Select<R>(lod < 0.0f, R{}, lod);
  R rec = Select<R>(r < 0.0f, R{}, Select<R>(r > 0.5f, Splat<R>(0.5f), r));
  if constexpr (kPopulation == k4PRIL) rec = rec / ((1.0f - rec) * 2.0f);
  const R distance = DistanceOf<R>(job.mappingFunction, rec);
  const auto recs = __builtin_bit_cast(LaneArray<R, float>, rec),
             lods = __builtin_bit_cast(LaneArray<R, float>, lod),
             distances = __builtin_bit_cast(LaneArray<R, float>, distance);
  for (size_t lane = 0; lane < kLanes<R>; ++lane) {
    if (!lanes.busy[lane] || !(lanes.done[lane] > 0)) continue;
    const size_t p = lanes.place[lane];
    job.rec[p] = recs.value[lane];
    job.lod[p] = lods.value[lane];
    job.distance[p] = distances.value[lane];
  }
}

template <class R, int32_t kPopulation, size_t kMixes>
inline void EstimateWith(const MultiParentLaneJob& job) {
  MixLanes<R, kMixes> lanes{};
  size_t next = 0, busy = 0;
  for (size_t lane = 0; lane < kLanes<R>; ++lane) {  // idle lanes repeat the first pair
    TakePair(lanes, lane, job.pairs[next < job.count ? next : 0]);
    lanes.busy[lane] = next < job.count;
    if (lanes.busy[lane]) ++next, ++busy;
  }
  while (busy > 0) {
    IterateLanes<R, kPopulation>(lanes, job.mixes);
    if (!Any<R>(LoadLanes<R>(lanes.done) > 0.0f)) continue;
    bool some = false;
    for (size_t lane = 0; lane < kLanes<R>; ++lane) some = some || (lanes.busy[lane] && lanes.done[lane] > 0);
    if (!some) continue;
    GiveAnswers<R, kPopulation>(job, lanes);
    for (size_t lane = 0; lane < kLanes<R>; ++lane) {
      if (!lanes.busy[lane] || !(lanes.done[lane] > 0)) continue;
      if (next < job.count) {
        TakePair(lanes, lane, job.pairs[next++]);
      } else {
        lanes.busy[lane] = false;
        --busy;
      }
    }
  }
}

template <class R, int32_t kPopulation>
inline void EstimateOf(const MultiParentLaneJob& job) {
  if (job.mixes <= 8) return EstimateWith<R, kPopulation, 8>(job);
  EstimateWith<R, kPopulation, kMostMixes>(job);
}

template <class R>
void EstimateMultiParent(const MultiParentLaneJob& job) {
  switch (job.population) {
    case k4PDH:
      return EstimateOf<R, k4PDH>(job);
    case k4PRIL:
      return EstimateOf<R, k4PRIL>(job);
    case k8PDH:
      return EstimateOf<R, k8PDH>(job);
    default:
      return EstimateOf<R, k8PRIL>(job);
  }
}

}  // namespace recombination

#pragma once

#include <cstring>

#include "recombination/lane_math.h"
#include "recombination/multi_parent_lanes.h"

// The iterated estimate of populations of four and eight parents over lanes. A lane whose pair is done takes
// the next pair, so that slow pairs hold up nobody; several vectors take turns, so that one's divisions run
// while another waits.
namespace recombination {

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

// QuadraticRecRoot over lanes, for the counts that occur here: b is below -2 n and the discriminant above 3 n^2,
// so that two real roots lie apart, and the one nearer to 0, by the same operations as there, is the only one
// that can lie in 0 to 0.5.
template <class R>
inline R QuadraticRecRoots(const R& a, const R& b, const R& c) {
  using Floats = typename HalfOf<kLanes<R>>::Floats;
  using Doubles = typename HalfOf<kLanes<R>>::Doubles;
  const auto as = __builtin_bit_cast(LaneArray<R, Floats>, a),
             bs = __builtin_bit_cast(LaneArray<R, Floats>, b),
             cs = __builtin_bit_cast(LaneArray<R, Floats>, c);
  LaneArray<R, Floats> smaller;
  for (int half = 0; half < 2; ++half) {
    const Doubles x = __builtin_convertvector(as.value[half], Doubles),
                  y = __builtin_convertvector(bs.value[half], Doubles),
                  z = __builtin_convertvector(cs.value[half], Doubles);
    const Doubles root = SqrtOfDoubles<R, Doubles>(y * y - 4.0 * x * z);
    smaller.value[half] = __builtin_convertvector(z / (-0.5 * (y - root)), Floats);
  }
  const R found = __builtin_bit_cast(R, smaller);
  const R admitted = Select<R>((found >= 0.0f) & (found <= 0.5f), found, Splat<R>(0.5f));
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

// What the lanes of one vector work on. Ticks count the iterations of the vector.
template <class R, size_t kRoom>
struct MixLanes {
  float cells[kRoom + 1][kParentKinds][kLanes<R>], counts[kRoom + 1][kLanes<R>],
      known[kParentKinds][kLanes<R>];
  float r[kLanes<R>], before[kLanes<R>], a[kLanes<R>], b[kLanes<R>], first[kLanes<R>];
  float n[kLanes<R>], uniform[kLanes<R>];
  size_t pair[kLanes<R>];
  uint32_t start[kLanes<R>];
  uint32_t tick, oldest, busy;  // no lane began before the oldest tick; a bit a lane
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

inline constexpr float kSettled = 1e-6f;  // change of the estimate, distance of a class from uniform
inline constexpr uint32_t kMostIterations = 1000;
inline constexpr size_t kOpenRoom = kMostMixes / 2;  // a mix has two cells or more

// One iteration of every lane; a bit for every lane that may be at its end. The expected count of a kind is
// what is known of it and its frequency times the sum of cells x count / frequency over the classes.
template <class R, int32_t kPopulation, size_t kRoom>
inline uint32_t IterateLanes(MixLanes<R, kRoom>& lanes, size_t mixes) {
  const R r = LoadLanes<R>(lanes.r);
  R frequency[kParentKinds] = {};
  KindFrequencies<R, kPopulation>(r, frequency);
  R first = frequency[0], same{}, sister{}, half{};
  const size_t count = kRoom < kOpenRoom ? kRoom : mixes;
#pragma GCC unroll 4
  for (size_t m = 0; m < count; ++m) {
    const R cells[kParentKinds] = {LoadLanes<R>(lanes.cells[m][0]), LoadLanes<R>(lanes.cells[m][1]),
                                   LoadLanes<R>(lanes.cells[m][2]), LoadLanes<R>(lanes.cells[m][3])};
    const R sum = ClassFrequency<R, kPopulation>(cells, frequency);
    if (m == 0) first = sum;
    const R weight = LoadLanes<R>(lanes.counts[m]) / sum;
    same = same + cells[0] * weight;
    if constexpr (Needed(kPopulation, 1)) sister = sister + cells[1] * weight;
    if constexpr (Needed(kPopulation, 2)) half = half + cells[2] * weight;
  }
  R expected[kParentKinds] = {};
  expected[0] = LoadLanes<R>(lanes.known[0]) + frequency[0] * same;
  if constexpr (Needed(kPopulation, 1)) expected[1] = LoadLanes<R>(lanes.known[1]) + frequency[1] * sister;
  if constexpr (Needed(kPopulation, 2)) expected[2] = LoadLanes<R>(lanes.known[2]) + frequency[2] * half;
  const R n = LoadLanes<R>(lanes.n);
  const StepCounts<R> c = CountsOf<R, kPopulation>(expected, n);
  const R next = NextRec<R, kPopulation>(c, n);
  StoreLanes<R>(lanes.before, r);
  StoreLanes<R>(lanes.r, next);
  StoreLanes<R>(lanes.a, c.a);
  StoreLanes<R>(lanes.b, c.b);
  StoreLanes<R>(lanes.first, first);
  const R change = Abs<R>(next - r), away = Abs<R>(first - LoadLanes<R>(lanes.uniform));
  ++lanes.tick;
  return MaskBits<R>(Not<R>(Select<R>(away < change, away, change) > kSettled));
}

// The lanes whose classes are all as frequent as each other at the estimate before the last iteration.
template <class R, int32_t kPopulation, size_t kRoom>
inline uint32_t AlikeLanes(const MultiParentLaneJob& job, const MixLanes<R, kRoom>& lanes) {
  const R uniform = LoadLanes<R>(lanes.uniform);
  R frequency[kParentKinds];
  KindFrequencies<R, kPopulation>(LoadLanes<R>(lanes.before), frequency);
  constexpr bool kOccurs[kParentKinds] = {Occurs(kPopulation, 0), Occurs(kPopulation, 1),
                                          Occurs(kPopulation, 2), Occurs(kPopulation, 3)};
  uint32_t alike = lanes.busy;
  for (size_t k = 0; k < kParentKinds; ++k) {
    if (!kOccurs[k]) continue;
    uint32_t without = 0;
    for (size_t lane = 0; lane < kLanes<R>; ++lane) {
      without |= static_cast<uint32_t>((job.pairs[lanes.pair[lane]].single >> k & 1) == 0) << lane;
    }
    alike &= without | MaskBits<R>(Abs<R>(frequency[k] - uniform) <= kSettled);
  }
  for (size_t m = 0; m < job.mixes; ++m) {
    R cells[kParentKinds];
    for (size_t k = 0; k < kParentKinds; ++k) cells[k] = LoadLanes<R>(lanes.cells[m][k]);
    const R sum = ClassFrequency<R, kPopulation>(cells, frequency);
    alike &= MaskBits<R>(Abs<R>(sum - uniform) <= kSettled);
  }
  return alike;
}

// Pairs that have settled and wait for LOD, limits and distance.
template <class R>
struct SettledPairs {
  float r[kLanes<R>], n[kLanes<R>], a[kLanes<R>], b[kLanes<R>];
  size_t place[kLanes<R>], count;
};

template <class R, int32_t kPopulation>
inline void GiveAnswers(const MultiParentLaneJob& job, SettledPairs<R>& settled) {
  const R r = LoadLanes<R>(settled.r), n = LoadLanes<R>(settled.n);
  R lod = MultiParentLod<R, kPopulation>({LoadLanes<R>(settled.a), LoadLanes<R>(settled.b)}, n, r);
  lod = Select<R>(lod < 0.0f, R{}, lod);
  R rec = Select<R>(r < 0.0f, R{}, Select<R>(r > 0.5f, Splat<R>(0.5f), r));
  if constexpr (kPopulation == k4PRIL) rec = rec / ((1.0f - rec) * 2.0f);
  const R distance = DistanceOf<R>(job.mappingFunction, rec);
  const auto recs = __builtin_bit_cast(LaneArray<R, float>, rec),
             lods = __builtin_bit_cast(LaneArray<R, float>, lod),
             distances = __builtin_bit_cast(LaneArray<R, float>, distance);
  for (size_t k = 0; k < settled.count; ++k) {
    job.rec[settled.place[k]] = recs.value[k];
    job.lod[settled.place[k]] = lods.value[k];
    job.distance[settled.place[k]] = distances.value[k];
  }
  settled.count = 0;
}

template <class R, size_t kRoom>
inline void TakePair(const MultiParentLaneJob& job, size_t pair, size_t lane, MixLanes<R, kRoom>& lanes) {
  const MultiParentPair& from = job.pairs[pair];
  const Mix* mix = job.mix + pair * job.mixes;
  for (size_t m = 0; m < job.mixes; ++m) {
    for (size_t k = 0; k < kParentKinds; ++k) lanes.cells[m][k][lane] = mix[m].cells[k];
    lanes.counts[m][lane] = mix[m].count;
  }
  for (size_t k = 0; k < kParentKinds; ++k) lanes.known[k][lane] = from.known[k];
  lanes.n[lane] = from.lines;
  lanes.uniform[lane] = from.uniform;
  lanes.r[lane] = 0.25f;
  lanes.pair[lane] = pair;
  lanes.start[lane] = lanes.tick;
  lanes.busy |= 1U << lane;
}

// Lanes that are at their end give their answer and take the next pairs; flagged: those that may be.
template <class R, int32_t kPopulation, size_t kRoom>
inline void EndLanes(const MultiParentLaneJob& job, uint32_t flagged, MixLanes<R, kRoom>& lanes, size_t& next,
                     SettledPairs<R>& settled) {
  uint32_t overdue = 0;
  if (lanes.tick - lanes.oldest > kMostIterations) {
    lanes.oldest = lanes.tick;
    for (size_t lane = 0; lane < kLanes<R>; ++lane) {
      if ((lanes.busy >> lane & 1) == 0) continue;
      if (lanes.tick - lanes.start[lane] > kMostIterations) {
        overdue |= 1U << lane;
      } else if (lanes.start[lane] - lanes.oldest > lanes.tick - lanes.oldest) {
        lanes.oldest = lanes.start[lane];
      }
    }
  }
  const R away = Abs<R>(LoadLanes<R>(lanes.first) - LoadLanes<R>(lanes.uniform));
  uint32_t alike = MaskBits<R>(away <= kSettled) & lanes.busy;
  if (alike != 0) alike &= AlikeLanes<R, kPopulation>(job, lanes);
  for (uint32_t left = (flagged | overdue) & lanes.busy; left != 0; left &= left - 1) {
    const auto lane = static_cast<size_t>(__builtin_ctz(left));
    const bool given = ((alike | overdue) >> lane & 1) != 0;
    if (!given) {
      if (__builtin_fabsf(lanes.r[lane] - lanes.before[lane]) > kSettled) continue;
      const size_t k = settled.count++;
      settled.r[k] = lanes.r[lane];
      settled.n[k] = lanes.n[lane];
      settled.a[k] = lanes.a[lane];
      settled.b[k] = lanes.b[lane];
      settled.place[k] = job.pairs[lanes.pair[lane]].place;
      if (settled.count == kLanes<R>) GiveAnswers<R, kPopulation>(job, settled);
    }
    lanes.busy &= ~(1U << lane);
    if (next < job.count) TakePair(job, next++, lane, lanes);
  }
}

template <class R, int32_t kPopulation, size_t kRoom>
inline void EstimateWith(const MultiParentLaneJob& job) {
  constexpr size_t kVectors = 4;
  MixLanes<R, kRoom> lanes[kVectors] = {};
  SettledPairs<R> settled = {};
  size_t next = 0;
  for (auto& some : lanes) {
    for (size_t lane = 0; lane < kLanes<R> && next < job.count; ++lane) TakePair(job, next++, lane, some);
  }
  for (uint32_t busy = 1; busy != 0;) {
    busy = 0;
    uint32_t flagged[kVectors];
    for (size_t v = 0; v < kVectors; ++v) flagged[v] = IterateLanes<R, kPopulation>(lanes[v], job.mixes);
    for (size_t v = 0; v < kVectors; ++v) {
      auto& some = lanes[v];
      if ((flagged[v] & some.busy) != 0 || some.tick - some.oldest > kMostIterations) {
        EndLanes<R, kPopulation>(job, flagged[v], some, next, settled);
      }
      busy |= some.busy;
    }
  }
  GiveAnswers<R, kPopulation>(job, settled);
}

template <class R, int32_t kPopulation>
inline void EstimateOf(const MultiParentLaneJob& job) {
  switch (job.mixes) {
    case 0:
      return EstimateWith<R, kPopulation, 0>(job);
    case 1:
      return EstimateWith<R, kPopulation, 1>(job);
    case 2:
      return EstimateWith<R, kPopulation, 2>(job);
    case 3:
      return EstimateWith<R, kPopulation, 3>(job);
    case 4:
      return EstimateWith<R, kPopulation, 4>(job);
    default:
      return EstimateWith<R, kPopulation, kOpenRoom>(job);
  }
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

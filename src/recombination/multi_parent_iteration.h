#pragma once

#include <cstring>

#include "recombination/multi_parent_estimator.h"

// The iterated estimate over lanes. Several vectors take turns, so that one's divisions run while another waits.
namespace recombination {

// What the lanes of one vector work on. Ticks count the iterations of the vector.
template <class R, size_t kRoom>
struct alignas(R) MixLanes {
  float cells[kRoom + 1][kParentKinds][kLanes<R>], counts[kRoom + 1][kLanes<R>],
      known[kParentKinds][kLanes<R>];
  float r[kLanes<R>], before[kLanes<R>], a[kLanes<R>], b[kLanes<R>], first[kLanes<R>];
  float n[kLanes<R>], uniform[kLanes<R>];
  float gap[kLanes<R>];  // not a number where mixes of the last kind alone are left out, else 0
  size_t place[kLanes<R>], model[kLanes<R>];
  uint64_t several[kLanes<R>];
  uint32_t single[kLanes<R>], start[kLanes<R>];
  int32_t live[kLanes<R>];      // all bits of those whose pair is not done
  uint32_t tick, oldest, busy;  // no lane began before the oldest tick; a bit a lane
};

inline constexpr uint32_t kMostIterations = 1000;
inline constexpr size_t kOpenRoom = kMostMixes / 2;  // a mix has two cells or more

template <class R>
struct Expected {
  R first;
  StepCounts<R> counts;
};

// The counts of an iteration of every lane. The expected count of a kind is what is known of it and its frequency
// times the sum of cells x count / frequency over the classes.
template <class R, int32_t kPopulation, size_t kRoom>
inline Expected<R> ExpectedOf(const MixLanes<R, kRoom>& lanes, size_t mixes) {
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
  // a class that cannot occur is split into parts of 0 / 0, also of the kinds that it does not hold
  expected[0] = expected[0] + Select<R>(r == 0.0f, LoadLanes<R>(lanes.gap), R{});
  if constexpr (Needed(kPopulation, 1)) expected[1] = LoadLanes<R>(lanes.known[1]) + frequency[1] * sister;
  if constexpr (Needed(kPopulation, 2)) expected[2] = LoadLanes<R>(lanes.known[2]) + frequency[2] * half;
  return {first, CountsOf<R, kPopulation>(expected, LoadLanes<R>(lanes.n))};
}

// A bit for every lane that may be at its end.
template <class R, int32_t kPopulation, size_t kRoom>
inline uint32_t IterateLanes(MixLanes<R, kRoom>& lanes, size_t mixes) {
  const R before = LoadLanes<R>(lanes.r);
  const auto [first, counts] = ExpectedOf<R, kPopulation>(lanes, mixes);
  const R next = NextRec<R, kPopulation>(counts, LoadLanes<R>(lanes.n));
  StoreLanes<R>(lanes.before, before);
  StoreLanes<R>(lanes.r, next);
  StoreLanes<R>(lanes.a, counts.a);
  StoreLanes<R>(lanes.b, counts.b);
  StoreLanes<R>(lanes.first, first);
  const R change = Abs<R>(next - before), away = Abs<R>(first - LoadLanes<R>(lanes.uniform));
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
      without |= static_cast<uint32_t>((lanes.single[lane] >> k & 1) == 0) << lane;
    }
    alike &= without | MaskBits<R>(Abs<R>(frequency[k] - uniform) <= kSettled);
  }
  const auto last = __builtin_bit_cast(LaneArray<R, float>, frequency[kParentKinds - 1]);
  for (uint32_t left = alike; left != 0; left &= left - 1) {
    const auto lane = static_cast<size_t>(__builtin_ctz(left));
    for (uint64_t several = lanes.several[lane]; several != 0; several &= several - 1) {
      const float of = job.several[__builtin_ctzll(several)][kParentKinds - 1] * last.value[lane];
      if (!(__builtin_fabsf(of - lanes.uniform[lane]) <= kSettled)) alike &= ~(1U << lane);
    }
  }
  for (size_t m = 0; m < job.mixes; ++m) {
    R cells[kParentKinds];
    for (size_t k = 0; k < kParentKinds; ++k) cells[k] = LoadLanes<R>(lanes.cells[m][k]);
    const R sum = ClassFrequency<R, kPopulation>(cells, frequency);
    alike &= MaskBits<R>(Abs<R>(sum - uniform) <= kSettled);
  }
  return alike;
}

inline constexpr size_t kNowhere = ~size_t{0};

// Pairs that have settled and wait for LOD, limits and distance.
template <class R>
struct alignas(R) SettledPairs {
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
    if (settled.place[k] == kNowhere) continue;
    job.rec[settled.place[k]] = recs.value[k];
    job.lod[settled.place[k]] = lods.value[k];
    job.distance[settled.place[k]] = distances.value[k];
  }
  settled.count = 0;
}

// Of the kinds that occur; the others stay 0.
template <class R, int32_t kPopulation, size_t kRoom>
inline void PutCells(const MixCells& cells, size_t m, size_t lane, MixLanes<R, kRoom>& lanes) {
  lanes.cells[m][0][lane] = cells[0];
  if constexpr (Occurs(kPopulation, 1)) lanes.cells[m][1][lane] = cells[1];
  if constexpr (Occurs(kPopulation, 2)) lanes.cells[m][2][lane] = cells[2];
  lanes.cells[m][3][lane] = cells[3];
}

template <class R, int32_t kPopulation, size_t kRoom>
inline void TakeMixed(const MultiParentLaneJob& job, size_t pair, size_t lane, MixLanes<R, kRoom>& lanes) {
  const MultiParentPair& from = job.pairs[pair];
  const Mix* mix = job.mix + pair * job.mixes;
  for (size_t m = 0; m < job.mixes; ++m) {
    const MixCells& cells = job.cells[mix[m].number];
    PutCells<R, kPopulation>(cells, m, lane, lanes);
    lanes.counts[m][lane] = mix[m].count;
  }
  for (size_t k = 0; k < kParentKinds; ++k) lanes.known[k][lane] = from.known[k];
  lanes.n[lane] = from.lines;
  lanes.uniform[lane] = from.uniform;
  lanes.gap[lane] = from.several != 0 ? __builtin_nanf("") : 0.0f;
  lanes.single[lane] = from.single;
  lanes.several[lane] = from.several;
  lanes.place[lane] = from.place;
}

// Most often a pair of the model that the lane had before.
template <class R, int32_t kPopulation, size_t kRoom>
inline void TakePlanned(const MultiParentLaneJob& job, size_t pair, size_t lane, MixLanes<R, kRoom>& lanes) {
  const PlannedPair& from = job.planned[pair];
  const size_t number = from.place >> kPlaceBits;
  const MixModel& model = job.models[number];
  if (lanes.model[lane] != number) {
    lanes.model[lane] = number;
    for (size_t m = 0; m < job.mixes; ++m) {
      const MixCells& cells = job.cells[model.number[m]];
      PutCells<R, kPopulation>(cells, m, lane, lanes);
    }
    for (size_t k = 0; k < kParentKinds; ++k) lanes.known[k][lane] = 0;
    lanes.uniform[lane] = model.uniform;
    lanes.gap[lane] = model.several != 0 ? __builtin_nanf("") : 0.0f;
    lanes.single[lane] = model.single;
    lanes.several[lane] = model.several;
  }
  uint64_t counts = from.counts;
  int32_t lines = 0;
  for (size_t m = 0; m < job.mixes; ++m, counts >>= 16) {
    const auto count = static_cast<int32_t>(counts & 0xffff);
    lanes.counts[m][lane] = static_cast<float>(count);
    lines += count;
  }
  for (size_t m = job.mixes; m < model.all; ++m, counts >>= 16) {
    const auto count = static_cast<int32_t>(counts & 0xffff);
    if (model.kind[m] < kParentKinds) lanes.known[model.kind[m]][lane] = static_cast<float>(count);
    lines += count;
  }
  lanes.n[lane] = static_cast<float>(lines);
  lanes.place[lane] = from.place & ((uint64_t{1} << kPlaceBits) - 1);
}

template <class R, int32_t kPopulation, size_t kRoom>
inline void TakePair(const MultiParentLaneJob& job, size_t pair, size_t lane, MixLanes<R, kRoom>& lanes) {
  if (job.planned != nullptr) {
    TakePlanned<R, kPopulation>(job, pair, lane, lanes);
  } else {
    TakeMixed<R, kPopulation>(job, pair, lane, lanes);
  }
  lanes.r[lane] = 0.25f;
  lanes.start[lane] = lanes.tick;
  lanes.busy |= 1U << lane;
}

// Where some pairs need far more iterations than others, a lane whose pair is done takes the next pair, so that slow
// pairs hold up nobody. Lanes that are at their end give their answer and take the next pairs; flagged: those that may be.
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
      settled.place[k] = lanes.place[lane];
      if (settled.count == kLanes<R>) GiveAnswers<R, kPopulation>(job, settled);
    }
    lanes.busy &= ~(1U << lane);
    if (next < job.count) TakePair<R, kPopulation>(job, next++, lane, lanes);
  }
}

template <class R, int32_t kPopulation, size_t kRoom>
inline void EstimateInTurn(const MultiParentLaneJob& job) {
  constexpr size_t kVectors = 4;
  MixLanes<R, kRoom> lanes[kVectors] = {};
  SettledPairs<R> settled = {};
  size_t next = 0;
  for (auto& some : lanes) {
    for (size_t lane = 0; lane < kLanes<R> && next < job.count; ++lane)
      TakePair<R, kPopulation>(job, next++, lane, some);
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

template <class R, int32_t kPopulation, size_t kRoom>
inline void TakeTogether(const MultiParentLaneJob& job, size_t& next, MixLanes<R, kRoom>& lanes,
                         SettledPairs<R>& settled) {
  lanes.busy = 0;
  for (size_t lane = 0; lane < kLanes<R>; ++lane) {
    lanes.place[lane] = kNowhere;
    if (next < job.count) TakePair<R, kPopulation>(job, next++, lane, lanes);
    lanes.live[lane] = -static_cast<int32_t>(lanes.busy >> lane & 1);
  }
  std::memcpy(settled.n, lanes.n, sizeof settled.n);
}

// An iteration in three parts, each of which all vectors take before the next, so that their divisions and roots
// overlap.
template <class R, int32_t kPopulation, size_t kRoom>
inline void ExpectTogether(const MultiParentLaneJob& job, MixLanes<R, kRoom>& lanes) {
  const auto [first, counts] = ExpectedOf<R, kPopulation>(lanes, job.mixes);
  StoreLanes<R>(lanes.a, counts.a);
  StoreLanes<R>(lanes.b, counts.b);
  StoreLanes<R>(lanes.first, first);
}
template <class R, int32_t kPopulation, size_t kRoom>
inline void MoveTogether(MixLanes<R, kRoom>& lanes) {
  StoreLanes<R>(lanes.before, LoadLanes<R>(lanes.r));
  StoreLanes<R>(lanes.r, NextRec<R, kPopulation>({LoadLanes<R>(lanes.a), LoadLanes<R>(lanes.b)},
                                                 LoadLanes<R>(lanes.n)));
}
// A lane that is done keeps what it has come to in settled, whatever becomes of it. When that is decides over data
// alone, so that the processor need not guess.
template <class R, int32_t kPopulation, size_t kRoom>
inline void SettleTogether(const MultiParentLaneJob& job, MixLanes<R, kRoom>& lanes,
                           SettledPairs<R>& settled) {
  Mask<R> live;
  std::memcpy(&live, lanes.live, sizeof live);
  const R away = Abs<R>(LoadLanes<R>(lanes.first) - LoadLanes<R>(lanes.uniform));
  if (MaskBits<R>(live & (away <= kSettled)) != 0) {
    for (uint32_t left = AlikeLanes<R, kPopulation>(job, lanes); left != 0; left &= left - 1) {
      const auto lane = static_cast<size_t>(__builtin_ctz(left));
      if (lanes.live[lane] != 0) lanes.place[lane] = kNowhere;
      lanes.live[lane] = 0;
    }
    std::memcpy(&live, lanes.live, sizeof live);
  }
  const R r = LoadLanes<R>(lanes.r);
  const Mask<R> ended = live & Not<R>(Abs<R>(r - LoadLanes<R>(lanes.before)) > kSettled);
  StoreLanes<R>(settled.r, Select<R>(ended, r, LoadLanes<R>(settled.r)));
  StoreLanes<R>(settled.a, Select<R>(ended, LoadLanes<R>(lanes.a), LoadLanes<R>(settled.a)));
  StoreLanes<R>(settled.b, Select<R>(ended, LoadLanes<R>(lanes.b), LoadLanes<R>(settled.b)));
  live = live & ~ended;
  std::memcpy(lanes.live, &live, sizeof live);
  lanes.busy = MaskBits<R>(live);
}

// Where all pairs need about the same number of iterations, the lanes take pairs together, and one that is done
// waits for the others.
template <class R, int32_t kPopulation, size_t kRoom>
inline void EstimateTogether(const MultiParentLaneJob& job) {
  constexpr size_t kVectors = 4;
  MixLanes<R, kRoom> lanes[kVectors] = {};
  SettledPairs<R> settled[kVectors] = {};
  for (size_t next = 0; next < job.count;) {
    uint32_t busy = 1;
    for (size_t v = 0; v < kVectors; ++v) TakeTogether<R, kPopulation>(job, next, lanes[v], settled[v]);
    for (uint32_t iteration = 0; iteration < kMostIterations && busy != 0; ++iteration) {
      busy = 0;
      for (size_t v = 0; v < kVectors; ++v) ExpectTogether<R, kPopulation>(job, lanes[v]);
      for (size_t v = 0; v < kVectors; ++v) MoveTogether<R, kPopulation>(lanes[v]);
      for (size_t v = 0; v < kVectors; ++v) SettleTogether<R, kPopulation>(job, lanes[v], settled[v]);
      for (size_t v = 0; v < kVectors; ++v) busy |= lanes[v].busy;
    }
    for (size_t v = 0; v < kVectors; ++v) {
      for (size_t lane = 0; lane < kLanes<R>; ++lane) {
        settled[v].place[lane] = (lanes[v].busy >> lane & 1) != 0 ? kNowhere : lanes[v].place[lane];
      }
      settled[v].count = kLanes<R>;
      GiveAnswers<R, kPopulation>(job, settled[v]);
    }
  }
}

template <class R, int32_t kPopulation, size_t kRoom>
inline void EstimateWith(const MultiParentLaneJob& job) {
  if constexpr (kPopulation == k8PRIL) {
    EstimateTogether<R, kPopulation, kRoom>(job);
  } else {
    EstimateInTurn<R, kPopulation, kRoom>(job);
  }
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

#pragma once

#include <cstring>

#include "recombination/clonal_lanes.h"
#include "recombination/lane_math.h"

// Estimators of the clonal F1 and the double cross over lanes: closed forms and one Newton run.
namespace recombination {

template <class R>
struct ClonalAnswer {
  R rec[3], lod[3], distance[3];
};

template <class R>
inline R FoldedRec(const R& r) {
  return 0.5f - Abs<R>(0.5f - r);
}
template <class R>
inline R PooledRec(const R& p1, const R& p2) {
  return ((1.0f - Abs<R>(0.5f - p1)) - Abs<R>(0.5f - p2)) * 0.5f;
}

// Sum of counts times the common logarithm of their frequencies; one that is not above 0 adds nothing.
template <class R, size_t kCount>
inline R Likelihood(const R (&counts)[kCount], const R (&at)[kCount]) {
  R sum{};
  for (size_t k = 0; k < kCount; ++k) {
    sum = sum + Select<R>(at[k] > 0.0f, counts[k] * LogOf<R, true>(at[k]), R{});
  }
  return sum;
}
template <class R, size_t kCount>
inline R LikelihoodOf(const R (&counts)[kCount], const float (&logs)[kCount]) {
  R sum{};
  for (size_t k = 0; k < kCount; ++k) sum = sum + counts[k] * logs[k];
  return sum;
}
// Common logarithms of 1/2, 1/4, 1/8 and 1/16, rounded.
inline constexpr float kLog2nd = -0.30102999566398119521f, kLog4th = -0.60205999132796239043f,
                       kLog8th = -0.90308998699194358564f, kLog16th = -1.20411998265592478086f;

template <class R>
inline void TwoClassParent(const R& same, const R& changed, R& rec, R& lod) {
  rec = changed / (same + changed);
  const R counts[2] = {same, changed}, at[2] = {1.0f - rec, rec};
  constexpr float kHalf[2] = {kLog2nd, kLog2nd};
  lod = Likelihood<R>(counts, at) - LikelihoodOf<R>(counts, kHalf);
}

// Counts of the likelihood A ln r + B ln(1 - r) + D ln(1 - 2r + 2r^2).
template <class R>
struct NewtonCounts {
  R a, b, d;
};
template <class R>
inline R ClonalStep(const NewtonCounts<R>& c, const R& r) {
  const R s = 1.0f - r, q = s - r + 2.0f * r * r;
  const R score = c.a / r + c.b / -s + (4.0f * r - 2.0f) * c.d / q;
  const R slope = -c.a / (r * r) - c.b / (s * s) + 8.0f * r * c.d * s / (q * q);
  return r - score / slope;
}

// From the first step's clamped value on. Lanes that are no numbers stop at once.
template <class R>
inline R ClonalNewton(const NewtonCounts<R>& c, const R& start, R r) {
  constexpr float kChange = 1e-6f;
  constexpr int kMost = 100;
  Mask<R> running = Abs<R>(r - start) > kChange;
  for (int iteration = 1; Any<R>(running); ++iteration) {
    const R next = ClonalStep<R>(c, r);
    const Mask<R> below = next<0.0f, above = next> 1.0f;
    R value = Select<R>(below, R{}, Select<R>(above, Splat<R>(0.5f), next));
    Mask<R> goesOn = running & (Abs<R>(next - r) > kChange) & Not<R>(below | above);
    if (iteration > kMost) {
      value = Splat<R>(0.5f);
      goesOn = goesOn & Not<R>(goesOn);
    }
    r = Select<R>(running, value, r);
    running = goesOn;
  }
  return r;
}

template <class R>
inline R PooledNewton(const NewtonCounts<R>& c, const R& start, float notANumber) {
  R r = ClonalStep<R>(c, start);
  r = Select<R>(r <= 0.0f, Splat<R>(0.0001f), r);
  r = ClonalNewton<R>(c, start, r);
  return Select<R>(IsNumber<R>(r), r, Splat<R>(notANumber));
}

// The parents' frequencies are known. Counts behind the total: cells 0 and 15, 2 and 13, 1 and 11, 3 and 9,
// 5 and 10, 7 and 8.
template <class R>
inline void WithIntercross(ClonalModel model, const R* c, ClonalAnswer<R>& x) {
  const R &z = c[1], &y = c[2], &v = c[3], &d = c[4], &w = c[5], &t = c[6];
  const bool five = model == ClonalModel::WithFive;
  const R p1 = x.rec[0], p2 = x.rec[1], s1 = 1.0f - p1, s2 = 1.0f - p2;
  const R f2 = five ? s2 : p2, g2 = five ? p2 : s2;
  const R counts[6] = {z, y, v, d, w, t};
  const R at[6] = {s1 * g2 * 0.25f, s1 * f2 * 0.25f, (p1 * g2 + s1 * f2) * 0.25f, (p1 * f2 + s1 * g2) * 0.25f,
                   p1 * f2 * 0.25f, p1 * g2 * 0.25f};
  constexpr float kNull[6] = {kLog16th, kLog16th, kLog8th, kLog8th, kLog16th, kLog16th};
  x.lod[2] = Likelihood<R>(counts, at) - LikelihoodOf<R>(counts, kNull);
  const R start = PooledRec<R>(p1, p2), k = z + w + d, m = t + y + v;
  if (five) {  // 0 for what is not a number: required as it stands
    x.rec[2] = PooledNewton<R>({k + 2.0f * t, k + 2.0f * y, v}, start, 0);
    return;
  }
  const R m2w = m + 2.0f * w, m2z = m + 2.0f * z, k2t = k + 2.0f * t, k2y = k + 2.0f * y;
  NewtonCounts<R> counted = {m2w, m2z, d};
  if (model == ClonalModel::WithFourPhase) {  // a second run takes the place of the first
    // one bound is strict, the other is not: required as it stands
    const Mask<R> first = p1 > 0.5f, second = p2 >= 0.5f, notFirst = p1 <= 0.5f, notSecond = p2 < 0.5f;
    const Mask<R> both = first & second, onlyFirst = first & notSecond, onlySecond = notFirst & second;
    counted.a = Select<R>(both, m2z, Select<R>(onlyFirst, k2y, Select<R>(onlySecond, k2t, m2w)));
    counted.b = Select<R>(both, m2w, Select<R>(onlyFirst, k2t, Select<R>(onlySecond, k2y, m2z)));
    counted.d = Select<R>(onlyFirst | onlySecond, v, d);
  }
  x.rec[2] = PooledNewton<R>(counted, start, 0.5f);
}

inline constexpr float kIntercrossNull[4] = {kLog16th, kLog16th, kLog8th, kLog4th};

// Counts behind the total: cells 0 and 15; 5 and 10; 1, 2, 7 and 11; 3.
template <class R>
inline void CouplingPhases(bool fiveFive, const R* c, ClonalAnswer<R>& x) {
  const R &n = c[0], &z = c[1], &w = c[2], &v = c[3], &d = c[4];
  const R a = v + 2.0f * w, b = fiveFive ? a : v + 2.0f * z;  // a twice: required as it stands
  const R start = ((1.0f - Sqrt<R>(2.0f * z / n)) + (v * 0.5f + 2.0f * w) / n) * 0.5f;
  const NewtonCounts<R> counted = {a, b, d};
  R r = ClonalStep<R>(counted, start);
  r = Select<R>(r <= 0.0f, Splat<R>(0.0001f), r);
  r = Select<R>(r >= 1.0f, Splat<R>(0.9999f), r);
  r = ClonalNewton<R>(counted, start, r);
  r = Select<R>(IsNumber<R>(r), r, Splat<R>(0.5f));
  const R f = FoldedRec<R>(r), s = 1.0f - f;
  const R counts[4] = {z, w, v, d},
          at[4] = {s * s * 0.25f, f * f * 0.25f, f * s * 0.5f, (s * s + f * f) * 0.5f};
  x.rec[0] = x.rec[1] = r;
  x.rec[2] = f;
  x.lod[0] = x.lod[1] = x.lod[2] = Likelihood<R>(counts, at) - LikelihoodOf<R>(counts, kIntercrossNull);
}

// One parent in coupling, the other in repulsion.
template <class R>
inline void MixedPhases(const R* c, ClonalAnswer<R>& x) {
  const R &n = c[0], &z = c[1], &w = c[2], &v = c[3], &d = c[4];
  const R sum = z + w + d;
  const R root = (1.0f - Sqrt<R>(1.0f - 2.0f * sum / n)) * 0.5f;
  const R r = Select<R>(sum <= n * 0.5f, root, Splat<R>(0.5f)), s = 1.0f - r;
  const R counts[4] = {z, w, v, d}, at[4] = {r * s * 0.25f, r * s * 0.25f, (r * r + s * s) * 0.25f, r * s};
  x.rec[0] = x.rec[1] = x.rec[2] = r;
  x.lod[0] = x.lod[1] = x.lod[2] = Likelihood<R>(counts, at) - LikelihoodOf<R>(counts, kIntercrossNull);
}

// The mixed phases only where they give the smaller frequency; repulsion is given to the CD parent.
template <class R>
inline void BetterPhases(const R* c, ClonalAnswer<R>& x) {
  ClonalAnswer<R> mixed;
  CouplingPhases<R>(false, c, x);
  MixedPhases<R>(c, mixed);
  mixed.rec[1] = 1.0f - mixed.rec[0];
  const Mask<R> better = mixed.rec[2] < x.rec[2];
  for (size_t k = 0; k < 3; ++k) {
    x.rec[k] = Select<R>(better, mixed.rec[k], x.rec[k]);
    x.lod[k] = Select<R>(better, mixed.lod[k], x.lod[k]);
  }
}

// The mean of one parent alone is its frequency folded, of the same distance.
template <class R>
inline void FillOther(size_t parent, ClonalAnswer<R>& x) {
  const size_t other = 1 - parent;
  x.rec[other] = Splat<R>(0.5f);
  x.lod[other] = R{};
  x.distance[other] = Splat<R>(kUnlinkedDistance);
  x.rec[2] = FoldedRec<R>(x.rec[parent]);
  x.lod[2] = x.lod[parent];
  x.distance[2] = x.distance[parent];
}

// Which distances are still to be found.
enum class Distances { None, Mean, All };

template <class R>
inline Distances EstimateClonalPair(ClonalModel model, const R* c, ClonalAnswer<R>& x) {
  switch (model) {
    case ClonalModel::FirstParent:
    case ClonalModel::SecondParent:
      FillOther<R>(model == ClonalModel::FirstParent ? 0 : 1, x);
      return Distances::None;
    case ClonalModel::BothParents:
      x.rec[2] = PooledRec<R>(x.rec[0], x.rec[1]);
      x.lod[2] = x.lod[0] + x.lod[1];
      return Distances::Mean;
    case ClonalModel::WithFour:
    case ClonalModel::WithFourPhase:
    case ClonalModel::WithFive:
      WithIntercross<R>(model, c, x);
      return Distances::Mean;
    case ClonalModel::Coupling:
    case ClonalModel::FiveFive:
      CouplingPhases<R>(model == ClonalModel::FiveFive, c, x);
      return Distances::All;
    case ClonalModel::TwoPhases:
      BetterPhases<R>(c, x);
      return Distances::All;
    case ClonalModel::FourFive:
      MixedPhases<R>(c, x);
      return Distances::All;
    default:
      FillOther<R>(0, x);
      FillOther<R>(1, x);
      return Distances::None;
  }
}

template <class R>
inline R LoadReals(const float* from) {
  R value;
  std::memcpy(&value, from, sizeof value);
  return value;
}
template <class R>
inline R LoadCounts(const int32_t* from) {
  Mask<R> whole;
  std::memcpy(&whole, from, sizeof whole);
  return __builtin_convertvector(whole, R);
}

template <class R>
inline void EstimateParents(const ClonalLaneJob& job) {
  for (size_t at = 0; at < job.count; at += kLanes<R>) {
    const R lines = LoadCounts<R>(job.counts + job.stride + at),
            changed = LoadCounts<R>(job.counts + 2 * job.stride + at);
    R rec, lod;
    TwoClassParent<R>(lines - changed, changed, rec, lod);
    const R distance = DistanceOf<R>(job.mappingFunction, rec);
    std::memcpy(job.rec[0] + at, &rec, sizeof rec);
    std::memcpy(job.lod[0] + at, &lod, sizeof lod);
    std::memcpy(job.distance[0] + at, &distance, sizeof distance);
  }
}

// Limits the LODs and tells the phase; pairs without lines get their answer.
template <class R>
inline void StoreAnswer(const ClonalLaneJob& job, size_t at, const R& lines, const ClonalAnswer<R>& x) {
  const Mask<R> seen = lines >= 1.0f;
  for (size_t k = 0; k < 3; ++k) {
    const R rec = Select<R>(seen, x.rec[k], Splat<R>(0.5f));
    const R lod = Select<R>(seen & Not<R>(x.lod[k] < 0.0f), x.lod[k], R{});
    const R distance = Select<R>(seen, x.distance[k], Splat<R>(kUnlinkedDistance));
    std::memcpy(job.rec[k] + at, &rec, sizeof rec);
    std::memcpy(job.lod[k] + at, &lod, sizeof lod);
    std::memcpy(job.distance[k] + at, &distance, sizeof distance);
  }
  // a true lane is -1
  const Mask<R> phase = 1 - 2 * Mask<R>(x.rec[0] > 0.5f) - Mask<R>(x.rec[1] > 0.5f);
  std::memcpy(job.phase + at, &phase, sizeof phase);
}

template <class R>
void EstimateClonal(const ClonalLaneJob& job) {
  if (job.model == ClonalModel::OneParent) return EstimateParents<R>(job);
  for (size_t at = 0; at < job.count; at += kLanes<R>) {
    R counts[kMostCounts];
    for (size_t k = 0; k < kMostCounts; ++k) counts[k] = LoadCounts<R>(job.counts + k * job.stride + at);
    ClonalAnswer<R> x;
    for (size_t k = 0; k < 2; ++k) {
      x.rec[k] = LoadReals<R>(job.rec[k] + at);
      x.lod[k] = LoadReals<R>(job.lod[k] + at);
      x.distance[k] = LoadReals<R>(job.distance[k] + at);
    }
    const Distances missing = EstimateClonalPair<R>(job.model, counts, x);
    if (missing != Distances::None) x.distance[2] = DistanceOf<R>(job.mappingFunction, x.rec[2]);
    if (missing == Distances::All) {
      x.distance[0] = DistanceOf<R>(job.mappingFunction, x.rec[0]);
      x.distance[1] = DistanceOf<R>(job.mappingFunction, x.rec[1]);
    }
    StoreAnswer<R>(job, at, counts[0], x);
  }
}

}  // namespace recombination

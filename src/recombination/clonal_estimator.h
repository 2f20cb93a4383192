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

// One run of Newton's method, r its answer.
template <class R>
struct NewtonRun {
  NewtonCounts<R> counted;
  R start, r;
};

// The first step, kept off 0 and, if asked for, off 1.
template <class R>
inline void FirstStep(bool belowOne, NewtonRun<R>& run) {
  const R r = ClonalStep<R>(run.counted, run.start), inside = Select<R>(r <= 0.0f, Splat<R>(0.0001f), r);
  run.r = belowOne ? Select<R>(inside >= 1.0f, Splat<R>(0.9999f), inside) : inside;
}

// From the first step's value on. Lanes that are no numbers stop at once. kRuns vectors side by side, as the steps of
// one wait for each other.
template <class R, size_t kRuns>
inline void ClonalNewton(NewtonRun<R> (&runs)[kRuns]) {
  constexpr float kChange = 1e-6f;
  constexpr int kMost = 100;
  Mask<R> running[kRuns], any{};
  for (size_t k = 0; k < kRuns; ++k) any |= running[k] = Abs<R>(runs[k].r - runs[k].start) > kChange;
  for (int iteration = 1; Any<R>(any); ++iteration) {
    any = Mask<R>{};
    for (size_t k = 0; k < kRuns; ++k) {
      R& r = runs[k].r;
      const R next = ClonalStep<R>(runs[k].counted, r);
      const Mask<R> below = next<0.0f, above = next> 1.0f;
      R value = Select<R>(below, R{}, Select<R>(above, Splat<R>(0.5f), next));
      Mask<R> goesOn = running[k] & (Abs<R>(next - r) > kChange) & Not<R>(below | above);
      if (iteration > kMost) {
        value = Splat<R>(0.5f);
        goesOn = Mask<R>{};
      }
      r = Select<R>(running[k], value, r);
      running[k] = goesOn;
      any |= goesOn;
    }
  }
}

// Counts of an ABCD marker with an intercross marker, behind the total.
template <class R>
struct SixClasses {
  const R &z, &y, &v, &d, &w, &t;  // cells 0 and 15, 2 and 13, 1 and 11, 3 and 9, 5 and 10, 7 and 8
  explicit SixClasses(const R* c) : z(c[1]), y(c[2]), v(c[3]), d(c[4]), w(c[5]), t(c[6]) {}
};

// The parents' frequencies are known.
template <class R>
inline void IntercrossRun(ClonalModel model, const R* counts, const ClonalAnswer<R>& x, NewtonRun<R>& run) {
  const SixClasses<R> c(counts);
  const R &p1 = x.rec[0], &p2 = x.rec[1];
  const R k = c.z + c.w + c.d, m = c.t + c.y + c.v;
  const R m2w = m + 2.0f * c.w, m2z = m + 2.0f * c.z, k2t = k + 2.0f * c.t, k2y = k + 2.0f * c.y;
  run.start = PooledRec<R>(p1, p2);
  if (model == ClonalModel::WithFive) {
    run.counted = {k2t, k2y, c.v};
    return;
  }
  run.counted = {m2w, m2z, c.d};
  if (model != ClonalModel::WithFourPhase) return;
  // A second run takes the place of the first. One bound is strict, the other is not: required as it stands.
  const Mask<R> first = p1 > 0.5f, second = p2 >= 0.5f, notFirst = p1 <= 0.5f, notSecond = p2 < 0.5f;
  const Mask<R> both = first & second, onlyFirst = first & notSecond, onlySecond = notFirst & second;
  run.counted.a = Select<R>(both, m2z, Select<R>(onlyFirst, k2y, Select<R>(onlySecond, k2t, m2w)));
  run.counted.b = Select<R>(both, m2w, Select<R>(onlyFirst, k2t, Select<R>(onlySecond, k2y, m2z)));
  run.counted.d = Select<R>(onlyFirst | onlySecond, c.v, c.d);
}

template <class R>
inline R IntercrossMeanLod(bool five, const R* countsOf, const ClonalAnswer<R>& x) {
  const SixClasses<R> c(countsOf);
  const R p1 = x.rec[0], p2 = x.rec[1], s1 = 1.0f - p1, s2 = 1.0f - p2;
  const R f2 = five ? s2 : p2, g2 = five ? p2 : s2;
  const R counts[6] = {c.z, c.y, c.v, c.d, c.w, c.t};
  const R at[6] = {s1 * g2 * 0.25f, s1 * f2 * 0.25f, (p1 * g2 + s1 * f2) * 0.25f, (p1 * f2 + s1 * g2) * 0.25f,
                   p1 * f2 * 0.25f, p1 * g2 * 0.25f};
  constexpr float kNull[6] = {kLog16th, kLog16th, kLog8th, kLog8th, kLog16th, kLog16th};
  return Likelihood<R>(counts, at) - LikelihoodOf<R>(counts, kNull);
}

// Counts behind the total: cells 0 and 15; 5 and 10; 1, 2, 7 and 11; 3. Frequencies of a line in each, by the phases
// and the frequency.
template <class R>
struct IntercrossCells {
  R at[4];
};
template <class R>
inline IntercrossCells<R> CouplingCells(const R& f) {
  const R s = 1.0f - f;
  return {{s * s * 0.25f, f * f * 0.25f, f * s * 0.5f, (s * s + f * f) * 0.5f}};
}
template <class R>
inline IntercrossCells<R> MixedCells(const R& r) {
  const R s = 1.0f - r;
  return {{r * s * 0.25f, r * s * 0.25f, (r * r + s * s) * 0.25f, r * s}};
}
template <class R>
inline R IntercrossLod(const R* c, const IntercrossCells<R>& cells) {
  const R counts[4] = {c[1], c[2], c[3], c[4]};
  constexpr float kNull[4] = {kLog16th, kLog16th, kLog8th, kLog4th};
  return Likelihood<R>(counts, cells.at) - LikelihoodOf<R>(counts, kNull);
}

// Both parents in one phase, not folded.
template <class R>
inline void CouplingRun(bool fiveFive, const R* c, NewtonRun<R>& run) {
  const R &n = c[0], &z = c[1], &w = c[2], &v = c[3], &d = c[4];
  const R a = v + 2.0f * w, b = fiveFive ? a : v + 2.0f * z;  // a twice: required as it stands
  run.start = ((1.0f - Sqrt<R>(2.0f * z / n)) + (v * 0.5f + 2.0f * w) / n) * 0.5f;
  run.counted = {a, b, d};
}

// One parent in coupling, the other in repulsion.
template <class R>
inline R MixedRec(const R* c) {
  const R &n = c[0], &z = c[1], &w = c[2], &d = c[4];
  const R sum = z + w + d;
  const R root = (1.0f - Sqrt<R>(1.0f - 2.0f * sum / n)) * 0.5f;
  return Select<R>(sum <= n * 0.5f, root, Splat<R>(0.5f));
}

template <class R>
inline void CouplingPhases(const R* c, const R& coupling, ClonalAnswer<R>& x) {
  x.rec[0] = x.rec[1] = coupling;
  x.rec[2] = FoldedRec<R>(coupling);
  x.lod[0] = x.lod[1] = x.lod[2] = IntercrossLod<R>(c, CouplingCells<R>(x.rec[2]));
}

template <class R>
inline void MixedPhases(const R* c, ClonalAnswer<R>& x) {
  x.rec[0] = x.rec[1] = x.rec[2] = MixedRec<R>(c);
  x.lod[0] = x.lod[1] = x.lod[2] = IntercrossLod<R>(c, MixedCells<R>(x.rec[2]));
}

// The mixed phases only where they give the smaller frequency; repulsion is given to the CD parent.
template <class R>
inline void BetterPhases(const R* c, const R& coupling, ClonalAnswer<R>& x) {
  const R folded = FoldedRec<R>(coupling), mixed = MixedRec<R>(c);
  const Mask<R> better = mixed < folded;
  x.rec[0] = Select<R>(better, mixed, coupling);
  x.rec[1] = Select<R>(better, 1.0f - mixed, coupling);
  x.rec[2] = Select<R>(better, mixed, folded);
  IntercrossCells<R> cells = CouplingCells<R>(folded);
  const IntercrossCells<R> others = MixedCells<R>(mixed);
  for (size_t k = 0; k < 4; ++k) cells.at[k] = Select<R>(better, others.at[k], cells.at[k]);
  x.lod[0] = x.lod[1] = x.lod[2] = IntercrossLod<R>(c, cells);
}

// Which distances are still to be found. A frequency and the same folded have one.
enum class Distances { Mean, OneForAll, ByParent };

// found: the answer of Newton's method, where the model has one.
template <class R>
inline Distances ClonalPairAt(ClonalModel model, const R* c, const R& found, ClonalAnswer<R>& x) {
  switch (model) {
    case ClonalModel::BothParents:
      x.rec[2] = PooledRec<R>(x.rec[0], x.rec[1]);
      x.lod[2] = x.lod[0] + x.lod[1];
      return Distances::Mean;
    case ClonalModel::Coupling:
    case ClonalModel::FiveFive:
      CouplingPhases<R>(c, found, x);
      return Distances::OneForAll;
    case ClonalModel::TwoPhases:
      BetterPhases<R>(c, found, x);
      return Distances::ByParent;
    case ClonalModel::FourFive:
      MixedPhases<R>(c, x);
      return Distances::OneForAll;
    default:
      x.rec[2] = found;
      x.lod[2] = IntercrossMeanLod<R>(model == ClonalModel::WithFive, c, x);
      return Distances::Mean;
  }
}

// Newton's method where a model has it.
template <class R, size_t kRuns>
inline void FindByNewton(ClonalModel model, const R (&counts)[kRuns][kMostCounts],
                         const ClonalAnswer<R> (&x)[kRuns], R (&found)[kRuns]) {
  if (model == ClonalModel::BothParents || model == ClonalModel::FourFive) return;
  const bool coupling =
      model == ClonalModel::Coupling || model == ClonalModel::TwoPhases || model == ClonalModel::FiveFive;
  NewtonRun<R> runs[kRuns];
  for (size_t k = 0; k < kRuns; ++k) {
    if (coupling) {
      CouplingRun<R>(model == ClonalModel::FiveFive, counts[k], runs[k]);
    } else {
      IntercrossRun<R>(model, counts[k], x[k], runs[k]);
    }
    FirstStep<R>(coupling, runs[k]);
  }
  ClonalNewton<R, kRuns>(runs);
  // 0 with A=D,B=C: required as it stands
  const R notANumber = Splat<R>(model == ClonalModel::WithFive ? 0.0f : 0.5f);
  for (size_t k = 0; k < kRuns; ++k) found[k] = Select<R>(IsNumber<R>(runs[k].r), runs[k].r, notANumber);
}

template <class R>
inline void FindDistances(Distances missing, int32_t mappingFunction, ClonalAnswer<R>& x) {
  if (missing == Distances::Mean) {
    x.distance[2] = DistanceOf<R>(mappingFunction, x.rec[2]);
    return;
  }
  x.distance[0] = x.distance[1] = x.distance[2] = DistanceOf<R>(mappingFunction, x.rec[0]);
  if (missing == Distances::ByParent) x.distance[1] = DistanceOf<R>(mappingFunction, x.rec[1]);
}

template <class R>
inline R LoadCounts(const int32_t* from) {
  Mask<R> whole;
  std::memcpy(&whole, from, sizeof whole);
  return __builtin_convertvector(whole, R);
}

template <class R>
inline void StoreReals(float* to, const R& value) {
  std::memcpy(to, &value, sizeof value);
}

// Counts behind the total: lines that tell of the parent, recombinant ones.
template <class R>
inline void EstimateParents(const ClonalLaneJob& job) {
  for (size_t at = 0; at < job.count; at += kLanes<R>) {
    const Mask<R> seen = LoadCounts<R>(job.counts + at) >= 1.0f;
    const R lines = LoadCounts<R>(job.counts + job.stride + at),
            changed = LoadCounts<R>(job.counts + 2 * job.stride + at);
    R rec, lod;
    TwoClassParent<R>(lines - changed, changed, rec, lod);
    rec = Select<R>(seen, rec, Splat<R>(0.5f));
    StoreReals<R>(job.rec[0] + at, rec);
    StoreReals<R>(job.rec[2] + at, FoldedRec<R>(rec));
    StoreReals<R>(job.lod[0] + at, lod);
    StoreReals<R>(job.distance[0] + at, DistanceOf<R>(job.mappingFunction, rec));
  }
}

// Limits the LODs; pairs without lines get their answer.
template <class R>
inline void StoreAnswer(const ClonalLaneJob& job, size_t at, const R& lines, const ClonalAnswer<R>& x) {
  const Mask<R> seen = lines >= 1.0f;
  for (size_t k = 0; k < 3; ++k) {
    StoreReals<R>(job.rec[k] + at, Select<R>(seen, x.rec[k], Splat<R>(0.5f)));
    StoreReals<R>(job.lod[k] + at, Select<R>(seen & Not<R>(x.lod[k] < 0.0f), x.lod[k], R{}));
    StoreReals<R>(job.distance[k] + at, Select<R>(seen, x.distance[k], Splat<R>(kUnlinkedDistance)));
  }
}

// kRuns vectors of pairs.
template <class R, size_t kRuns>
inline void EstimateVectors(const ClonalLaneJob& job, size_t from) {
  R counts[kRuns][kMostCounts], found[kRuns] = {};
  ClonalAnswer<R> x[kRuns];
  for (size_t run = 0; run < kRuns; ++run) {
    const size_t at = from + run * kLanes<R>;
    for (size_t k = 0; k < kMostCounts; ++k) counts[run][k] = LoadCounts<R>(job.counts + k * job.stride + at);
    for (size_t k = 0; k < 2; ++k) {
      x[run].rec[k] = LoadLanes<R>(job.rec[k] + at);
      x[run].lod[k] = LoadLanes<R>(job.lod[k] + at);
      x[run].distance[k] = LoadLanes<R>(job.distance[k] + at);
    }
  }
  FindByNewton<R, kRuns>(job.model, counts, x, found);
  for (size_t run = 0; run < kRuns; ++run) {
    const Distances missing = ClonalPairAt<R>(job.model, counts[run], found[run], x[run]);
    FindDistances<R>(missing, job.mappingFunction, x[run]);
    StoreAnswer<R>(job, from + run * kLanes<R>, counts[run][0], x[run]);
  }
}

template <class R>
void EstimateClonal(const ClonalLaneJob& job) {
  if (job.model == ClonalModel::OneParent) return EstimateParents<R>(job);
  constexpr size_t kTwo = 2 * kLanes<R>;
  size_t at = 0;
  for (; at + kLanes<R> < job.count; at += kTwo) EstimateVectors<R, 2>(job, at);
  if (at < job.count) EstimateVectors<R, 1>(job, at);
}

}  // namespace recombination

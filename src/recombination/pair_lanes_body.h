#pragma once

#include <cstring>

#include "recombination/pair_lanes.h"
#include "recombination/selfing_estimator.h"
#include "recombination/two_class_estimator.h"

namespace recombination {

// estimate(table, n, rec, lod) gives the better phase of the tables of one vector.
template <class R, class F>
inline void EstimateAll(const LaneJob& job, F estimate) {
  for (size_t at = 0; at < job.count; at += kLanes<R>) {
    R table[9];
    R n{};
    for (size_t k = 0; k < 9; ++k) {
      table[k] = LoadLanes<R>(job.cells + k * job.stride + at);
      n = n + table[k];
    }
    R rec, lod;
    estimate(table, n, rec, lod);
    const Mask<R> seen = n > 0.0f;
    rec = Select<R>(seen, rec, Splat<R>(0.5f));
    lod = Select<R>(seen & Not<R>(lod < 0.0f), lod, R{});
    StoreLanes<R>(job.rec + at, rec);
    StoreLanes<R>(job.lod + at, lod);
    const R shown = job.phases == Phases::Repulsion ? 1.0f - rec : rec;
    StoreLanes<R>(job.distance + at, DistanceOf<R>(job.mappingFunction, shown));
  }
}

template <class R>
void Estimate(const LaneJob& job) {
  const bool selfing = WithModel(job.population, job.pairCode, [&job](auto known, auto index) {
    EstimateAll<R>(job, [](const R* table, const R& n, R& rec, R& lod) {
      BothPhases<R, decltype(known)::value, decltype(index)::value>(table, n, rec, lod);
    });
  });
  if (selfing) return;
  EstimateAll<R>(job, [&job](const R* table, const R& n, R& rec, R& lod) {
    if (job.phases == Phases::Better) return TwoClassBothPhases<R>(job.population, table, n, rec, lod);
    TwoClassOnePhase<R>(job.population, job.phases == Phases::Repulsion, table, n, rec, lod);
  });
}

}  // namespace recombination

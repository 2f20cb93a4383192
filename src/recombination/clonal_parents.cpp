#include "recombination/clonal_parents.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "recombination/four_rows.h"
#include "recombination/lane_math.h"
#include "recombination/map_functions.h"

namespace recombination {
namespace {

constexpr size_t kMostKnown = size_t{1} << 20;
constexpr float kNotMade = -1;  // a frequency that no parent has

typedef int32_t Whole4 __attribute__((vector_size(16)));
constexpr size_t kFour = 4;

// Parents one after the other, through the lanes.
struct ParentBatch {
  alignas(64) std::array<std::array<int32_t, kClonalRun>, 3> counts{};
  alignas(64) std::array<std::array<float, kClonalRun>, 4> value;

  void Estimate(const ParentTables& tables, size_t count) {
    EstimateClonalLanes(tables.level, {ClonalModel::OneParent,
                                       tables.mappingFunction,
                                       counts[0].data(),
                                       kClonalRun,
                                       count,
                                       {value[0].data(), nullptr, value[3].data()},
                                       {value[1].data(), nullptr, nullptr},
                                       {value[2].data(), nullptr, nullptr}});
  }
};

// All numbers of recombinants among so many lines.
void Make(ParentTables& tables, size_t lines) {
  const size_t start = lines * (lines + 1) / 2;
  ParentBatch batch;
  for (size_t from = 0; from <= lines; from += kClonalRun) {
    const size_t count = std::min(kClonalRun, lines + 1 - from);
    for (size_t k = 0; k < count; ++k) {
      batch.counts[0][k] = 1;
      batch.counts[1][k] = static_cast<int32_t>(lines);
      batch.counts[2][k] = static_cast<int32_t>(from + k);
    }
    batch.Estimate(tables, count);
    const auto& value = batch.value;
    for (size_t k = 0; k < count; ++k) {
      tables.known[start + from + k] = {value[0][k], value[1][k], value[2][k], value[3][k]};
    }
  }
}

// Where the entries of four pairs stand; the numbers of lines are small enough for the product to be exact.
inline Whole4 PlacesOf(const ParentRun& run, size_t at) {
  Whole4 lines, changed;
  std::memcpy(&lines, run.lines + at, sizeof lines);
  std::memcpy(&changed, run.changed + at, sizeof changed);
  const Float4 n = __builtin_convertvector(lines, Float4);
  return __builtin_convertvector(n * (n + 1.0f) * 0.5f, Whole4) + changed;
}

struct FourKnown {
  Float4 rec, lod, distance, folded;
};
inline FourKnown Load4(const ParentTables& tables, const Whole4& place) {
  std::array<Float4, kFour> e;
  for (size_t t = 0; t < kFour; ++t) {
    std::memcpy(&e[t], &tables.known[static_cast<size_t>(place[t])], sizeof e[t]);
  }
  const auto [rec, lod, distance, folded] = Transposed(e);
  return {rec, lod, distance, folded};
}

inline void StoreSeen(float* to, const Mask<Float4>& seen, const Float4& value, float empty) {
  const Float4 chosen = Select<Float4>(seen, value, Splat<Float4>(empty));
  std::memcpy(to, &chosen, sizeof chosen);
}

void ResolveByLanes(const ParentTables& tables, const ParentRun& run) {
  ParentBatch batch;
  std::copy_n(run.seen, run.count, batch.counts[0].begin());
  std::copy_n(run.lines, run.count, batch.counts[1].begin());
  std::copy_n(run.changed, run.count, batch.counts[2].begin());
  batch.Estimate(tables, run.count);
  float* const to[4] = {run.rec, run.lod, run.distance, run.folded};
  for (size_t k = 0; k < 4; ++k) std::copy_n(batch.value[k].begin(), run.count, to[k]);
}

}  // namespace

ParentTables OpenParents(Level level, int32_t mappingFunction, int32_t populationSize, int64_t numPairs) {
  ParentTables tables{level, mappingFunction, {}};
  const auto lines = static_cast<size_t>(std::max(populationSize, 0));
  const size_t entries = (lines + 1) * (lines + 2) / 2;
  if (entries > kMostKnown || static_cast<int64_t>(entries) > numPairs) return tables;
  tables.known.assign(entries, {kNotMade, 0, 0, 0});
  return tables;
}

void ResolveParent(ParentTables& tables, const ParentRun& run) {
  if (tables.known.empty()) return ResolveByLanes(tables, run);
  for (size_t at = 0; at < run.count; at += kFour) {
    const Whole4 place = PlacesOf(run, at);
    FourKnown known = Load4(tables, place);
    if (Any<Float4>(known.rec < 0.0f)) {
      for (size_t t = 0; t < kFour; ++t) {
        if (known.rec[t] < 0) Make(tables, static_cast<size_t>(run.lines[at + t]));
      }
      known = Load4(tables, place);
    }
    Whole4 lines;
    std::memcpy(&lines, run.seen + at, sizeof lines);
    const Mask<Float4> seen = lines != 0;
    StoreSeen(run.rec + at, seen, known.rec, 0.5f);
    StoreSeen(run.lod + at, seen, known.lod, 0);
    StoreSeen(run.distance + at, seen, known.distance, kUnlinkedDistance);
    StoreSeen(run.folded + at, seen, known.folded, 0.5f);
  }
}

}  // namespace recombination

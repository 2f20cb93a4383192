#include "recombination/clonal_tables.h"

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <vector>

#include "recombination/clonal_counts.h"
#include "recombination/clonal_estimator.h"
#include "recombination/clonal_lanes.h"
#include "recombination/map_functions.h"
#include "recombination/pair_index.h"
#include "recombination/pair_lanes.h"
#include "stats/generator.h"

namespace recombination {
namespace {

constexpr size_t kMostTwoClass = size_t{1} << 20;  // entries of 16 bytes

constexpr void Add(ClonalTerms& terms, uint8_t count, uint8_t first, uint8_t second) {
  terms.term[terms.size++] = {count, first, second};
}
// Cells of the table are 8 h1 + 4 h2 + 2 l1 + l2, with h and l the bits of the two markers' classes.
constexpr void AddCells(ClonalTerms& terms, uint8_t count, std::initializer_list<int> cells) {
  for (const int u : cells) {
    Add(terms, count, static_cast<uint8_t>((u >> 3 & 1) * 2 + (u >> 1 & 1)),
        static_cast<uint8_t>((u >> 2 & 1) * 2 + (u & 1)));
  }
}
constexpr void AddChanged(ClonalTerms& terms, uint8_t count, uint8_t zero, uint8_t one) {
  Add(terms, count, zero, one);
  Add(terms, count, one, zero);
}
enum class Cells { None, BothParents, AB, CD, TwoFour, ThreeFour, TwoFive, Six, Four };
constexpr ClonalTerms TermsOf(Cells cells) {
  ClonalTerms terms;
  Add(terms, 0, kSeen, kSeen);
  switch (cells) {
    case Cells::None:
      break;
    case Cells::BothParents:
      AddChanged(terms, 1, kHigh0, kHigh1);
      AddChanged(terms, 2, kLow0, kLow1);
      break;
    case Cells::AB:
      Add(terms, 1, kSeen, kSeen);
      AddChanged(terms, 2, kHigh0, kHigh1);
      break;
    case Cells::CD:
      Add(terms, 1, kSeen, kSeen);
      AddChanged(terms, 2, kLow0, kLow1);
      break;
    case Cells::TwoFour:
      AddCells(terms, 1, {0, 7, 2, 5});
      AddCells(terms, 2, {2, 5});
      break;
    case Cells::ThreeFour:
      AddCells(terms, 1, {0, 13, 5, 8});
      AddCells(terms, 2, {5, 8});
      break;
    case Cells::TwoFive:  // the other way round: required as it stands
      AddCells(terms, 1, {2, 5, 0, 7});
      AddCells(terms, 2, {0, 7});
      break;
    case Cells::Six:
      AddCells(terms, 1, {0, 15});
      AddCells(terms, 2, {2, 13});
      AddCells(terms, 3, {1, 11});
      AddCells(terms, 4, {3, 9});
      AddCells(terms, 5, {5, 10});
      AddCells(terms, 6, {7, 8});
      break;
    case Cells::Four:
      AddCells(terms, 1, {0, 15});
      AddCells(terms, 2, {5, 10});
      AddCells(terms, 3, {1, 2, 7, 11});
      AddCells(terms, 4, {3});
      break;
  }
  return terms;
}

// What two categories come to, in a clonal F1 and in a double cross.
struct CaseRow {
  int32_t first, second;
  ClonalTerms terms;
  ClonalModel clonal, doubleCross;
};
using enum ClonalModel;
constexpr CaseRow kNoCase = {0, 0, TermsOf(Cells::None), Nothing, Nothing};
constexpr std::array<CaseRow, 14> kCases = {{
    {1, 1, TermsOf(Cells::BothParents), BothParents, BothParents},
    {1, 2, TermsOf(Cells::CD), SecondParent, SecondParent},
    {2, 2, TermsOf(Cells::CD), SecondParent, SecondParent},
    {1, 3, TermsOf(Cells::AB), FirstParent, FirstParent},
    {3, 3, TermsOf(Cells::AB), FirstParent, FirstParent},
    {2, 4, TermsOf(Cells::TwoFour), SecondParent, SecondParent},
    {3, 4, TermsOf(Cells::ThreeFour), FirstParent, FirstParent},
    {2, 5, TermsOf(Cells::TwoFive), Nothing, SecondParent},
    {3, 5, TermsOf(Cells::ThreeFour), Nothing, FirstParent},
    {1, 4, TermsOf(Cells::Six), WithFourPhase, WithFour},
    {1, 5, TermsOf(Cells::Six), WithFive, WithFive},
    {4, 4, TermsOf(Cells::Four), TwoPhases, Coupling},
    {4, 5, TermsOf(Cells::Four), Nothing, FourFive},
    {5, 5, TermsOf(Cells::Four), Nothing, FiveFive},
}};
const CaseRow& CaseOf(int32_t first, int32_t second) {
  for (const CaseRow& row : kCases) {
    if (row.first == first && row.second == second) return row;
  }
  return kNoCase;
}

// What one parent's count of recombinants among a number of lines comes to. LOD as it is, maybe below 0.
struct TwoClass {
  float rec, lod, distance;
  bool known;
};

// One run of pairs: marker i with positions of a store.
struct Run {
  alignas(64) ClonalCounts counts;
  alignas(64) ClonalCounts parents;  // lines that tell of the parents, recombinant in one, in the other
  alignas(64) std::array<std::array<float, kClonalRun>, 3> rec, lod, distance;
  alignas(64) std::array<int32_t, kClonalRun> phase;
  size_t size = 0;
};

struct Loop {
  const Genotypes& data;
  const ClonalPairResults& results;
  Level level;
  std::vector<TwoClass> twoClass;  // of c in n lines at n (n + 1) / 2 + c; empty for very many lines
  Run run;
};

void EstimateLanes(Level level, const ClonalLaneJob& job) {
  switch (level) {
#if defined(__x86_64__)
    case Level::Avx512:
      return EstimateClonalAvx512(job);
    case Level::Avx2:
      return EstimateClonalAvx2(job);
#endif
    default:
      return EstimateClonalPortable(job);
  }
}

const TwoClass& TwoClassAt(Loop& loop, size_t lines, size_t changed) {
  TwoClass& at = loop.twoClass[lines * (lines + 1) / 2 + changed];
  if (!at.known) {
    const auto other = static_cast<float>(changed);
    TwoClassParent<float>(static_cast<float>(lines) - other, other, at.rec, at.lod);
    at.distance = DistanceFromRec(loop.data.mappingFunction, at.rec);
    at.known = true;
  }
  return at;
}

// One parent of the run from its lines and recombinants.
void ParentRun(Loop& loop, size_t parent, const ClonalCounts& counts, size_t lines, size_t changed) {
  Run& run = loop.run;
  float *rec = run.rec[parent].data(), *lod = run.lod[parent].data(), *distance = run.distance[parent].data();
  const auto &all = counts[lines], &some = counts[changed];
  if (loop.twoClass.empty()) {
    const auto table = std::make_unique<ClonalCounts>();
    (*table)[1] = all;
    (*table)[2] = some;
    EstimateLanes(loop.level, {ClonalModel::OneParent,
                               loop.data.mappingFunction,
                               (*table)[0].data(),
                               kClonalRun,
                               run.size,
                               {rec, nullptr, nullptr},
                               {lod, nullptr, nullptr},
                               {distance, nullptr, nullptr},
                               nullptr});
    return;
  }
  for (size_t t = 0; t < run.size; ++t) {
    const TwoClass& at = TwoClassAt(loop, static_cast<size_t>(all[t]), static_cast<size_t>(some[t]));
    rec[t] = at.rec;
    lod[t] = at.lod;
    distance[t] = at.distance;
  }
}

void ParentsWithIntercross(Loop& loop, bool five) {
  Run& run = loop.run;
  const ClonalCounts& c = run.counts;
  const auto &changed = five ? c[1] : c[5], &alsoChanged = five ? c[6] : c[2];
  for (size_t from = 0; from < run.size; from += kMostLanes) {
    for (size_t t = from; t < from + kMostLanes; ++t) {
      run.parents[0][t] = c[1][t] + c[2][t] + c[5][t] + c[6][t];
      run.parents[1][t] = c[5][t] + c[6][t];
      run.parents[2][t] = changed[t] + alsoChanged[t];
    }
  }
  ParentRun(loop, 0, run.parents, 0, 1);
  ParentRun(loop, 1, run.parents, 0, 2);
}

// Which of the parents of two intercross markers shows repulsion is not in the data: a draw decides.
void DrawParents(Run& run) {
  for (size_t t = 0; t < run.size; ++t) {
    if (run.counts[0][t] == 0) continue;
    const bool swapped = stats::UniformDraw() > 0.5f;
    if (!swapped || run.rec[0][t] == run.rec[1][t]) continue;
    std::swap(run.rec[0][t], run.rec[1][t]);
    std::swap(run.distance[0][t], run.distance[1][t]);
    run.phase[t] = 3;
  }
}

void EstimateRun(Loop& loop, ClonalModel model) {
  Run& run = loop.run;
  switch (model) {
    case FirstParent:
      ParentRun(loop, 0, run.counts, 1, 2);
      break;
    case SecondParent:
      ParentRun(loop, 1, run.counts, 1, 2);
      break;
    case BothParents:
      ParentRun(loop, 0, run.counts, 0, 1);
      ParentRun(loop, 1, run.counts, 0, 2);
      break;
    case WithFour:
    case WithFourPhase:
    case WithFive:
      ParentsWithIntercross(loop, model == WithFive);
      break;
    default:
      break;
  }
  EstimateLanes(loop.level, {model,
                             loop.data.mappingFunction,
                             run.counts[0].data(),
                             kClonalRun,
                             run.size,
                             {run.rec[0].data(), run.rec[1].data(), run.rec[2].data()},
                             {run.lod[0].data(), run.lod[1].data(), run.lod[2].data()},
                             {run.distance[0].data(), run.distance[1].data(), run.distance[2].data()},
                             run.phase.data()});
  if (model == TwoPhases) DrawParents(run);
}

// first: the row's pair with marker 1.
void WriteRun(const Loop& loop, const ClonalPlanes& store, size_t from, size_t first) {
  const Run& run = loop.run;
  const ClonalPairResults& out = loop.results;
  const int32_t* marker = store.markers.data() + from;
  for (size_t k = 0; k < 3; ++k) {
    float *rec = out.rec[k] + first, *lod = out.lod[k] + first, *distance = out.distance[k] + first;
    for (size_t t = 0; t < run.size; ++t) {
      const auto p = static_cast<size_t>(marker[t]) - 1;
      rec[p] = run.rec[k][t];
      lod[p] = run.lod[k][t];
      distance[p] = run.distance[k][t];
    }
  }
  int32_t* phase = out.phase + first;
  for (size_t t = 0; t < run.size; ++t) {
    if (run.counts[0][t] != 0) phase[static_cast<size_t>(marker[t]) - 1] = run.phase[t];
  }
}

void OneRun(Loop& loop, int32_t i, const ClonalPlanes& rowStore, const std::vector<uint64_t>& rowWords,
            const ClonalPlanes& store, size_t from, size_t to) {
  loop.run.size = to - from;
  const bool rowFirst = store.category >= rowStore.category;
  const CaseRow& row =
      CaseOf(std::min(rowStore.category, store.category), std::max(rowStore.category, store.category));
  CountClonal(loop.level, row.terms, rowFirst, rowWords.data(), store, from, to, loop.run.counts);
  EstimateRun(loop, loop.data.population == 1 ? row.clonal : row.doubleCross);
  WriteRun(loop, store, from, static_cast<size_t>(PairIndex(i, 1)) - 1);
}

// Asks for the places of some pairs ahead of the writing.
void FetchPlaces(const ClonalPairResults& out, size_t from, size_t to) {
  constexpr size_t kLine = 64 / sizeof(float);
  for (size_t p = from; p < to; p += kLine) {
    for (size_t k = 0; k < 3; ++k) {
      __builtin_prefetch(out.rec[k] + p, 1);
      __builtin_prefetch(out.lod[k] + p, 1);
      __builtin_prefetch(out.distance[k] + p, 1);
    }
    __builtin_prefetch(out.phase + p, 1);
  }
}

// All pairs of marker i, met[s] of which are with store s. Every store's share of some neighbouring markers
// before the next ones, so that the row's places stay near.
void OneRow(Loop& loop, int32_t i, const ClonalPlanes& rowStore, const std::vector<uint64_t>& rowWords,
            const std::vector<ClonalPlanes>& stores, const std::vector<size_t>& met) {
  constexpr int32_t kNeighbours = 512;
  std::vector<size_t> from(stores.size());
  for (int32_t end = kNeighbours; end < i + kNeighbours; end += kNeighbours) {
    FetchPlaces(loop.results, static_cast<size_t>(PairIndex(i, 1) - 1 + end - kNeighbours),
                static_cast<size_t>(PairIndex(i, 1) - 1 + std::min(end, i - 1)));
    for (size_t s = 0; s < stores.size(); ++s) {
      const auto& markers = stores[s].markers;
      const auto begin = markers.begin();
      const auto stop =
          static_cast<size_t>(std::upper_bound(begin + static_cast<std::ptrdiff_t>(from[s]),
                                               begin + static_cast<std::ptrdiff_t>(met[s]), end) -
                              begin);
      for (; from[s] < stop; from[s] = std::min(from[s] + kClonalRun, stop)) {
        OneRun(loop, i, rowStore, rowWords, stores[s], from[s], std::min(from[s] + kClonalRun, stop));
      }
    }
  }
}

}  // namespace

void ComputeClonalPairs(const Genotypes& data, const ClonalPairResults& results, Level level) {
  if (data.numMarkers < 2) return;
  const std::vector<ClonalPlanes> stores = MakeClonalPlanes(data);
  const auto loop = std::make_unique<Loop>(Loop{data, results, level, {}, {}});
  const auto lines = static_cast<size_t>(std::max(data.populationSize, 0));
  const size_t entries = (lines + 1) * (lines + 2) / 2;
  if (entries <= kMostTwoClass) loop->twoClass.assign(entries, TwoClass{});
  std::vector<size_t> met(stores.size());  // markers of each store behind the row's
  // Row by row, so that the draws come in the order of the pairs.
  for (int32_t i = 1; i <= data.numMarkers; ++i) {
    size_t own = 0;
    while (stores[own].category != data.category[i - 1]) ++own;
    const ClonalPlanes& rowStore = stores[own];
    std::vector<uint64_t> words(kClonalPlaneCount * rowStore.words);
    for (size_t k = 0; k < words.size(); ++k) words[k] = rowStore.bits[k * rowStore.stride + met[own]];
    OneRow(*loop, i, rowStore, words, stores, met);
    ++met[own];
  }
}

void ComputeClonalPairs(const Genotypes& data, const ClonalPairResults& results) {
  ComputeClonalPairs(data, results, BestLevel());
}

}  // namespace recombination

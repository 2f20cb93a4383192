#include "recombination/clonal_tables.h"

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

#include "recombination/clonal_counts.h"
#include "recombination/clonal_estimator.h"
#include "recombination/clonal_lanes.h"
#include "recombination/clonal_parents.h"
#include "recombination/clonal_rows.h"
#include "recombination/pair_index.h"
#include "recombination/pair_lanes.h"
#include "stats/generator.h"

namespace recombination {
namespace {

// Cells of the table are 8 h1 + 4 h2 + 2 l1 + l2, with h and l the bits of the two markers' classes.
constexpr PlanePair PlanesOf(int cell) {
  return {static_cast<uint8_t>((cell >> 3 & 1) * 2 + (cell >> 1 & 1)),
          static_cast<uint8_t>((cell >> 2 & 1) * 2 + (cell & 1))};
}
constexpr PlanePair kNone = {kClonalPlaneCount, kClonalPlaneCount};
constexpr ClonalTerm OneCell(int cell) { return {PlanesOf(cell), kNone}; }
constexpr ClonalTerm TwoCells(int a, int b) { return {PlanesOf(a), PlanesOf(b)}; }
constexpr ClonalTerm Of(uint8_t first, uint8_t second) { return {{first, second}, kNone}; }
constexpr ClonalTerm Changed(uint8_t zero, uint8_t one) { return {{zero, one}, {one, zero}}; }

constexpr ClonalTerms Terms(std::initializer_list<ClonalTerm> behindTotal) {
  ClonalTerms terms;
  terms.term[terms.size++] = Of(kSeen, kSeen);
  for (const ClonalTerm& term : behindTotal) terms.term[terms.size++] = term;
  return terms;
}
// Cells 0 and 15, 2 and 13, 1 and 11, 3 and 9, 5 and 10, 7 and 8.
constexpr ClonalTerms kSix = Terms(
    {TwoCells(0, 15), TwoCells(2, 13), Of(kOuter, kClass1), TwoCells(3, 9), TwoCells(5, 10), TwoCells(7, 8)});
// Cells 0 and 15; 5 and 10; 1, 2, 7 and 11; 3.
constexpr ClonalTerms kFour = Terms({TwoCells(0, 15), TwoCells(5, 10), Changed(kOuter, kClass1), OneCell(3)});
constexpr ClonalTerms kAB = Terms({Changed(kHigh0, kHigh1)}), kCD = Terms({Changed(kLow0, kLow1)});
constexpr ClonalTerms kBoth = Terms({Changed(kHigh0, kHigh1), Changed(kLow0, kLow1)});
constexpr ClonalTerms kTwoFour = Terms({TwoCells(2, 5), Of(kHigh0, kOuter)});
constexpr ClonalTerms kThreeFour = Terms({TwoCells(5, 8), Of(kLow0, kOuter)});
constexpr ClonalTerms kTwoFive =  // the other way round: required as it stands
    Terms({TwoCells(0, 7), Of(kHigh0, kOuter)});

// What two categories come to, in a clonal F1 and in a double cross. Where one parent alone is told of, the lines that
// tell of it are count `lines` and the recombinant ones count 1.
struct CaseRow {
  int32_t first, second;
  const ClonalTerms& terms;
  size_t lines;
  ClonalModel clonal, doubleCross;
};
using enum ClonalModel;
constexpr ClonalTerms kSeenAlone = Terms({});
constexpr CaseRow kNoCase = {0, 0, kSeenAlone, 0, Nothing, Nothing};
constexpr std::array<CaseRow, 14> kCases = {{
    {1, 1, kBoth, 0, BothParents, BothParents},
    {1, 2, kCD, 0, SecondParent, SecondParent},
    {2, 2, kCD, 0, SecondParent, SecondParent},
    {1, 3, kAB, 0, FirstParent, FirstParent},
    {3, 3, kAB, 0, FirstParent, FirstParent},
    {2, 4, kTwoFour, 2, SecondParent, SecondParent},
    {3, 4, kThreeFour, 2, FirstParent, FirstParent},
    {2, 5, kTwoFive, 2, Nothing, SecondParent},
    {3, 5, kThreeFour, 2, Nothing, FirstParent},
    {1, 4, kSix, 0, WithFourPhase, WithFour},
    {1, 5, kSix, 0, WithFive, WithFive},
    {4, 4, kFour, 0, TwoPhases, Coupling},
    {4, 5, kFour, 0, Nothing, FourFive},
    {5, 5, kFour, 0, Nothing, FiveFive},
}};
const CaseRow& CaseOf(int32_t first, int32_t second) {
  for (const CaseRow& row : kCases) {
    if (row.first == first && row.second == second) return row;
  }
  return kNoCase;
}

// Room for the columns of a part, every store's at a multiple of the lanes.
constexpr size_t kRoom = kClonalRun + kMostStores * kMostLanes;
struct Columns {
  alignas(64) std::array<std::array<float, kRoom>, 3> rec, lod, distance;
};

struct EmptyPair {
  size_t pair;
  int32_t phase;
};

struct Loop {
  const Genotypes& data;
  const ClonalPairResults& results;
  Level level;
  ParentTables parents;
  std::vector<EmptyPair> empty;  // of a part, with the phase that they keep
  alignas(64) ClonalCounts counts;
  alignas(64) ClonalCounts told;  // lines that tell of the parents, recombinant in one, in the other
  Columns columns;
};

// One parent of the run whose columns begin at `at`. Frequencies folded go into the place of the mean.
void FindParent(Loop& loop, size_t at, size_t count, size_t parent, const ClonalCounts& counts, size_t lines,
                size_t changed) {
  Columns& to = loop.columns;
  ResolveParent(loop.parents, {loop.counts[0].data(), counts[lines].data(), counts[changed].data(), count,
                               to.rec[parent].data() + at, to.lod[parent].data() + at,
                               to.distance[parent].data() + at, to.rec[2].data() + at});
}

void FindParentsWithIntercross(Loop& loop, size_t at, size_t count, bool five) {
  const ClonalCounts& c = loop.counts;
  const auto &changed = five ? c[1] : c[5], &alsoChanged = five ? c[6] : c[2];
  for (size_t from = 0; from < count; from += kMostLanes) {
    for (size_t t = from; t < from + kMostLanes; ++t) {
      loop.told[0][t] = c[1][t] + c[2][t] + c[5][t] + c[6][t];
      loop.told[1][t] = c[5][t] + c[6][t];
      loop.told[2][t] = changed[t] + alsoChanged[t];
    }
  }
  FindParent(loop, at, count, 0, loop.told, 0, 1);
  FindParent(loop, at, count, 1, loop.told, 0, 2);
}

// Which of the parents of two intercross markers shows repulsion is not in the data: a draw decides.
void DrawParents(Loop& loop, size_t at, size_t count) {
  auto &rec = loop.columns.rec, &distance = loop.columns.distance;
  for (size_t t = 0; t < count; ++t) {
    if (loop.counts[0][t] == 0) continue;
    if (stats::UniformDraw() > 0.5f) {
      std::swap(rec[0][at + t], rec[1][at + t]);
      std::swap(distance[0][at + t], distance[1][at + t]);
    }
  }
}

// One parent tells everything; nothing tells of the other.
void FillOneParent(Loop& loop, const CaseRow& row, size_t at, size_t parent, StorePart& part) {
  const size_t count = part.to - part.from;
  FindParent(loop, at, count, parent, loop.counts, row.lines, 1);
  float* lod = loop.columns.lod[parent].data() + at;
  for (size_t t = 0; t < count; t += kLanes<Float4>) {
    const Float4 found = LoadLanes<Float4>(lod + t);
    StoreReals<Float4>(lod + t, Select<Float4>(found < 0.0f, Float4{}, found));
  }
  part.rec[parent] = loop.columns.rec[parent].data() + at;
  part.rec[2] = loop.columns.rec[2].data() + at;
  part.lod[parent] = part.lod[2] = lod;
  part.distance[parent] = part.distance[2] = loop.columns.distance[parent].data() + at;
}

void FillModel(Loop& loop, ClonalModel model, size_t at, StorePart& part) {
  const size_t count = part.to - part.from;
  auto &rec = loop.columns.rec, &lod = loop.columns.lod, &distance = loop.columns.distance;
  if (model == BothParents) {
    FindParent(loop, at, count, 0, loop.counts, 0, 1);
    FindParent(loop, at, count, 1, loop.counts, 0, 2);
  } else if (model == WithFour || model == WithFourPhase || model == WithFive) {
    FindParentsWithIntercross(loop, at, count, model == WithFive);
  }
  EstimateClonalLanes(loop.level,
                      {model,
                       loop.data.mappingFunction,
                       loop.counts[0].data(),
                       kClonalRun,
                       count,
                       {rec[0].data() + at, rec[1].data() + at, rec[2].data() + at},
                       {lod[0].data() + at, lod[1].data() + at, lod[2].data() + at},
                       {distance[0].data() + at, distance[1].data() + at, distance[2].data() + at}});
  if (model == TwoPhases) DrawParents(loop, at, count);
  for (size_t k = 0; k < 3; ++k) {
    part.rec[k] = rec[k].data() + at;
    part.lod[k] = lod[k].data() + at;
    part.distance[k] = distance[k].data() + at;
  }
}

bool AnyEmpty(const int32_t* seen, size_t count) {
  size_t t = 0;
  for (; t + 4 <= count; t += 4) {
    if (Any<Float4>(LoadCounts<Float4>(seen + t) < 1.0f)) return true;
  }
  for (; t < count; ++t) {
    if (seen[t] == 0) return true;
  }
  return false;
}

// Pairs without a line keep their phase.
void NoteEmpty(Loop& loop, const StorePart& part, size_t first) {
  const size_t count = part.to - part.from;
  if (!AnyEmpty(loop.counts[0].data(), count)) return;
  for (size_t t = 0; t < count; ++t) {
    if (loop.counts[0][t] != 0) continue;
    const size_t pair = first + static_cast<size_t>(part.store->markers[part.from + t]) - 1;
    loop.empty.push_back({pair, loop.results.phase[pair]});
  }
}

// The marker of a row.
struct RowMarker {
  const ClonalPlanes& store;
  std::vector<uint64_t> words;
  size_t first;  // its pair with marker 1
};

void FillPart(Loop& loop, const RowMarker& row, size_t at, StorePart& part) {
  const int32_t a = row.store.category, b = part.store->category;
  const CaseRow& rule = CaseOf(std::min(a, b), std::max(a, b));
  CountClonal(loop.level, rule.terms, b >= a, row.words.data(), *part.store, part.from, part.to, loop.counts);
  NoteEmpty(loop, part, row.first);
  const ClonalModel model = loop.data.population == 1 ? rule.clonal : rule.doubleCross;
  switch (model) {
    case Nothing:
      return;
    case FirstParent:
    case SecondParent:
      return FillOneParent(loop, rule, at, model == FirstParent ? 0 : 1, part);
    default:
      return FillModel(loop, model, at, part);
  }
}

// The row's pairs with the markers before it from a block on.
void OnePart(Loop& loop, const RowMarker& row, const std::vector<ClonalPlanes>& stores,
             const std::vector<size_t>& met, size_t block, size_t count) {
  RowPart part{block, count, {}, 0};
  size_t at = 0;
  loop.empty.clear();
  for (size_t s = 0; s < stores.size(); ++s) {
    const size_t end = std::min(block + kClonalRun / kMarkerBlock, stores[s].mask.size());
    const size_t from = stores[s].before[block], to = std::min(size_t{stores[s].before[end]}, met[s]);
    if (from >= to) continue;
    StorePart& store = part.store[part.stores++] = {&stores[s], from, to, {}, {}, {}};
    FillPart(loop, row, at, store);
    at += (to - from + kMostLanes - 1) / kMostLanes * kMostLanes;
  }
  WriteRow(loop.level, part, loop.results, row.first);
  for (const EmptyPair& empty : loop.empty) loop.results.phase[empty.pair] = empty.phase;
}

}  // namespace

void ComputeClonalPairs(const Genotypes& data, const ClonalPairResults& results, Level level) {
  if (data.numMarkers < 2) return;
  const std::vector<ClonalPlanes> stores = MakeClonalPlanes(data);
  ParentTables parents =
      OpenParents(level, data.mappingFunction, data.populationSize, PairCount(data.numMarkers));
  const auto loop = std::make_unique<Loop>(Loop{data, results, level, std::move(parents), {}, {}, {}, {}});
  std::vector<std::size_t> met(stores.size());  // markers of each store before the row's
  // Row by row, so that the draws come in the order of the pairs.
  for (int32_t i = 1; i <= data.numMarkers; ++i) {
    const auto before = static_cast<size_t>(i) - 1;
    size_t own = 0;
    while ((stores[own].mask[before / kMarkerBlock] >> before % kMarkerBlock & 1) == 0) ++own;
    RowMarker row{stores[own], std::vector<uint64_t>(kClonalPlaneCount * stores[own].words),
                  static_cast<size_t>(PairIndex(i, 1)) - 1};
    for (size_t k = 0; k < row.words.size(); ++k) {
      row.words[k] = row.store.Bits()[k * row.store.stride + met[own]];
    }
    for (size_t from = 0; from < before; from += kClonalRun) {
      OnePart(*loop, row, stores, met, from / kMarkerBlock, std::min(kClonalRun, before - from));
    }
    ++met[own];
  }
}

void ComputeClonalPairs(const Genotypes& data, const ClonalPairResults& results) {
  ComputeClonalPairs(data, results, BestLevel());
}

}  // namespace recombination

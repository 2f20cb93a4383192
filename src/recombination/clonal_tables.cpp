#include "recombination/clonal_tables.h"

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <vector>

#include "recombination/clonal_lanes.h"
#include "recombination/pair_counts.h"
#include "recombination/pair_index.h"
#include "recombination/pair_lanes.h"
#include "stats/generator.h"

namespace recombination {
namespace {

constexpr size_t kWordBits = 64, kRun = 512;  // pairs of one row taken together

// The four classes of a letter; the gamete of the AB parent, then of the CD parent; any class.
enum ClonalPlane : uint8_t { kClass0, kClass1, kClass2, kClass3, kHigh0, kHigh1, kLow0, kLow1, kSeen };
constexpr size_t kClonalPlanes = 9;

// Adds to a count of ClonalLaneJob the lines that show one plane at the first and one at the second marker.
struct Term {
  uint8_t count, first, second;
};
struct Terms {
  std::array<Term, 13> term{};
  size_t size = 0;
};
constexpr void Add(Terms& terms, uint8_t count, uint8_t first, uint8_t second) {
  terms.term[terms.size++] = {count, first, second};
}
// Cells of the table are 8 h1 + 4 h2 + 2 l1 + l2, with h and l the bits of the two markers' classes.
constexpr void AddCells(Terms& terms, uint8_t count, std::initializer_list<int> cells) {
  for (const int u : cells) {
    Add(terms, count, static_cast<uint8_t>((u >> 3 & 1) * 2 + (u >> 1 & 1)),
        static_cast<uint8_t>((u >> 2 & 1) * 2 + (u & 1)));
  }
}
constexpr void AddParent(Terms& terms, uint8_t count, uint8_t zero, uint8_t one) {
  Add(terms, count, zero, zero);
  Add(terms, count, one, one);
  Add(terms, count + 1, zero, one);
  Add(terms, count + 1, one, zero);
}
enum class Cells { None, BothParents, AB, CD, TwoFour, ThreeFour, TwoFive, Six, Four };
constexpr Terms TermsOf(Cells cells) {
  Terms terms;
  Add(terms, 0, kSeen, kSeen);
  switch (cells) {
    case Cells::None:
      break;
    case Cells::BothParents:
      AddParent(terms, 1, kHigh0, kHigh1);
      AddParent(terms, 3, kLow0, kLow1);
      break;
    case Cells::AB:
      AddParent(terms, 1, kHigh0, kHigh1);
      break;
    case Cells::CD:
      AddParent(terms, 1, kLow0, kLow1);
      break;
    case Cells::TwoFour:
      AddCells(terms, 1, {0, 7});
      AddCells(terms, 2, {2, 5});
      break;
    case Cells::ThreeFour:
      AddCells(terms, 1, {0, 13});
      AddCells(terms, 2, {5, 8});
      break;
    case Cells::TwoFive:  // the other way round: required as it stands
      AddCells(terms, 1, {2, 5});
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
  Terms terms;
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

// Bit planes of the markers of one category: word w of plane p of the marker at a position (from 0) stands at
// bits[(p * words + w) * stride + position].
struct Planes {
  int32_t category = 0;
  std::vector<int32_t> markers;  // one-based, ascending
  size_t words = 0, stride = 0;
  std::array<bool, kClonalPlanes> present{};
  std::vector<uint64_t> bits;

  const uint64_t* At(size_t plane) const { return bits.data() + plane * words * stride; }
};

constexpr size_t ClassOf(char letter) {
  switch (letter) {
    case 'A':
    case 'E':
    case 'G':
    case 'I':
      return 0;
    case 'B':
    case 'F':
    case 'J':
      return 1;
    case 'C':
    case 'H':
      return 2;
    case 'D':
    case 'K':
      return 3;
    default:
      return 4;
  }
}
constexpr std::array<uint8_t, 256> kClassOfLetter = [] {
  std::array<uint8_t, 256> table{};
  for (size_t k = 0; k < table.size(); ++k) table[k] = static_cast<uint8_t>(ClassOf(static_cast<char>(k)));
  return table;
}();

void FillMarker(Planes& store, size_t position, const char* letters, size_t lines) {
  for (size_t w = 0; w < store.words; ++w) {
    std::array<uint64_t, 5> c{};
    const char* at = letters + w * kWordBits;
    const size_t count = std::min(kWordBits, lines - w * kWordBits);
    for (size_t line = 0; line < count; ++line) {
      c[kClassOfLetter[static_cast<unsigned char>(at[line])]] |= uint64_t{1} << line;
    }
    const std::array<uint64_t, kClonalPlanes> planes = {c[0],        c[1],        c[2],
                                                        c[3],        c[0] | c[1], c[2] | c[3],
                                                        c[0] | c[2], c[1] | c[3], c[0] | c[1] | c[2] | c[3]};
    for (size_t p = 0; p < kClonalPlanes; ++p) {
      store.bits[(p * store.words + w) * store.stride + position] = planes[p];
      store.present[p] = store.present[p] || planes[p] != 0;
    }
  }
}

std::vector<Planes> PlanesOf(const Genotypes& data) {
  std::vector<Planes> stores;
  for (int32_t m = 1; m <= data.numMarkers; ++m) {
    const int32_t category = data.category[m - 1];
    auto at =
        std::find_if(stores.begin(), stores.end(), [&](const Planes& s) { return s.category == category; });
    if (at == stores.end()) {
      at = stores.insert(at, Planes{});
      at->category = category;
    }
    at->markers.push_back(m);
  }
  const auto lines = static_cast<size_t>(std::max(data.populationSize, 0));
  for (Planes& store : stores) {
    store.words = (lines + kWordBits - 1) / kWordBits;
    store.stride = (store.markers.size() + kCountLanes - 1) / kCountLanes * kCountLanes;
    store.bits.assign(kClonalPlanes * store.words * store.stride, 0);
    for (size_t k = 0; k < store.markers.size(); ++k) {
      FillMarker(store, k, data.genotype + static_cast<size_t>(store.markers[k] - 1) * lines, lines);
    }
  }
  return stores;
}

// One run of pairs: marker i with positions of a store.
struct Run {
  std::array<std::array<uint32_t, kRun>, kMostCounts> counts;
  std::array<uint32_t, kRun> scratch;
  alignas(64) std::array<std::array<float, kRun>, kMostCounts> real;
  alignas(64) std::array<std::array<float, kRun>, 3> rec, lod, distance;
  size_t size = 0;
};

struct Loop {
  const Genotypes& data;
  const ClonalPairResults& results;
  Level level;
  Run run;
};

void EstimateRun(Level level, const ClonalLaneJob& job) {
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

// Counts of the terms for the row marker's words with the store's positions from..to.
void CountTerms(Loop& loop, const Terms& terms, bool rowFirst, const Planes& rowStore,
                const std::vector<uint64_t>& rowWords, const Planes& store, size_t from, size_t to) {
  Run& run = loop.run;
  const size_t padded = (run.size + kMostLanes - 1) / kMostLanes * kMostLanes;
  for (auto& count : run.counts) std::fill_n(count.begin(), padded, 0U);
  for (size_t k = 0; k < terms.size; ++k) {
    const Term& term = terms.term[k];
    const size_t atRow = rowFirst ? term.first : term.second, at = rowFirst ? term.second : term.first;
    if (!rowStore.present[atRow] || !store.present[at]) continue;
    CountRow(loop.level, rowWords.data() + atRow * store.words, store.At(at), store.words, store.stride, from,
             to, run.scratch.data());
    auto& count = run.counts[term.count];
    for (size_t t = 0; t < run.size; ++t) count[t] += run.scratch[t];
  }
  for (size_t k = 0; k < kMostCounts; ++k) {
    for (size_t t = 0; t < padded; ++t) run.real[k][t] = static_cast<float>(run.counts[k][t]);
  }
}

// Which of the parents of two intercross markers shows repulsion is not in the data: a draw decides.
void DrawParents(Run& run) {
  for (size_t t = 0; t < run.size; ++t) {
    if (run.counts[0][t] == 0) continue;
    const bool swapped = stats::UniformDraw() > 0.5f;
    if (swapped && run.rec[0][t] != run.rec[1][t]) {
      std::swap(run.rec[0][t], run.rec[1][t]);
      std::swap(run.distance[0][t], run.distance[1][t]);
    }
  }
}

void WriteRun(const Loop& loop, const Planes& store, size_t from, size_t first) {
  const Run& run = loop.run;
  const ClonalPairResults& out = loop.results;
  for (size_t t = 0; t < run.size; ++t) {
    const size_t p = first + static_cast<size_t>(store.markers[from + t]) - 1;
    for (size_t k = 0; k < 3; ++k) {
      out.rec[k][p] = run.rec[k][t];
      out.lod[k][p] = run.lod[k][t];
      out.distance[k][p] = run.distance[k][t];
    }
    if (run.counts[0][t] != 0) {
      out.phase[p] = 1 + (run.rec[0][t] > 0.5f ? 2 : 0) + (run.rec[1][t] > 0.5f ? 1 : 0);
    }
  }
}

void OneRun(Loop& loop, int32_t i, const Planes& rowStore, const std::vector<uint64_t>& rowWords,
            const Planes& store, size_t from, size_t to) {
  Run& run = loop.run;
  run.size = to - from;
  const bool rowFirst = store.category >= rowStore.category;
  const CaseRow& row =
      CaseOf(std::min(rowStore.category, store.category), std::max(rowStore.category, store.category));
  const ClonalModel model = loop.data.population == 1 ? row.clonal : row.doubleCross;
  CountTerms(loop, row.terms, rowFirst, rowStore, rowWords, store, from, to);
  EstimateRun(loop.level, {model,
                           loop.data.mappingFunction,
                           run.real[0].data(),
                           kRun,
                           run.size,
                           {run.rec[0].data(), run.rec[1].data(), run.rec[2].data()},
                           {run.lod[0].data(), run.lod[1].data(), run.lod[2].data()},
                           {run.distance[0].data(), run.distance[1].data(), run.distance[2].data()}});
  if (model == TwoPhases) DrawParents(run);
  WriteRun(loop, store, from, static_cast<size_t>(PairIndex(i, 1)) - 1);
}

}  // namespace

void ComputeClonalPairs(const Genotypes& data, const ClonalPairResults& results, Level level) {
  if (data.numMarkers < 2) return;
  const std::vector<Planes> stores = PlanesOf(data);
  const auto loop = std::make_unique<Loop>(Loop{data, results, level, {}});
  std::vector<size_t> met(stores.size());  // markers of each store behind the row's
  // Row by row, so that the draws come in the order of the pairs.
  for (int32_t i = 1; i <= data.numMarkers; ++i) {
    size_t own = 0;
    while (stores[own].category != data.category[i - 1]) ++own;
    const Planes& rowStore = stores[own];
    std::vector<uint64_t> words(kClonalPlanes * rowStore.words);
    for (size_t k = 0; k < words.size(); ++k) words[k] = rowStore.bits[k * rowStore.stride + met[own]];
    for (size_t s = 0; s < stores.size(); ++s) {
      for (size_t from = 0; from < met[s]; from += kRun) {
        OneRun(*loop, i, rowStore, words, stores[s], from, std::min(from + kRun, met[s]));
      }
    }
    ++met[own];
  }
}

void ComputeClonalPairs(const Genotypes& data, const ClonalPairResults& results) {
  ComputeClonalPairs(data, results, BestLevel());
}

}  // namespace recombination

#include "recombination/pair_tables.h"

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

#include "recombination/layouts.h"
#include "recombination/map_functions.h"
#include "recombination/pair_counts.h"
#include "recombination/pair_index.h"
#include "recombination/pair_lanes.h"
#include "recombination/population_table.h"
#include "recombination/remembered.h"
#include "recombination/remembered_phases.h"
#include "recombination/two_class_models.h"
#include "recombination/two_point.h"

namespace recombination {
namespace {

// Pairs of one row taken together; a multiple of kCountLanes and kMostLanes.
constexpr size_t kRun = kMostPhasePairs;
constexpr size_t kMostDirect = size_t{1} << 20;  // entries of 16 bytes
constexpr int64_t kPairsPerLine = 1000;  // with fewer pairs the tables of unequal classes recur too seldom
constexpr int32_t kMostKeyed = 65535;    // lines whose counts fit 16 bits of a key

// How the tables of one pair code come to their estimates.
enum class Route {
  Direct,  // two counts decide: an array over them
  Phases,  // two classes of unequal frequency: three counts decide each phase, and those of neighbours recur
  Keyed,   // F2 and F3, nothing missing: four counts decide, few tables occur, and they are remembered
  Lanes,   // most tables differ: each estimated, many at once
  OneByOne,  // what the estimators leave as it was
};

struct Known {
  float rec, lod, crossovers, distance;
};

// One run of pairs: marker i with positions from..to of a store. Cells are of the table as the estimators
// want it, letters those of marker i by marker j that count for crossovers.
struct Run {
  std::array<std::array<uint32_t, kRun>, 9> cells, letters;
  std::array<std::array<float, kRun>, 9> gathered;
  std::array<uint32_t, kRun> slots;
  std::array<uint32_t, kRun> fresh;
  alignas(64) std::array<float, kRun> rec, lod, crossovers, distance;
  size_t count = 0;
};

struct Loop {
  const Genotypes& data;
  const PairResults& results;
  Level level;
  std::vector<PlaneStore> stores;
  std::vector<Known> direct;
  RememberedTables remembered;
  RememberedPhases phases;
  Run run;
};

size_t RoundUp(size_t count) { return (count + kMostLanes - 1) / kMostLanes * kMostLanes; }

// Whether all letters of a store belong to the two classes of the population.
bool OnlyTwoClasses(const PopulationRow& row, const PlaneStore& store) {
  return !store.reduced && !(row.ratio[0] == 0 && store.present[kA]) &&
         !(row.ratio[1] == 0 && store.present[kHalf]) && !(row.ratio[2] == 0 && store.present[kB]);
}

Route RouteOf(const Loop& loop, const PlaneStore& i, const PlaneStore& j, int32_t code) {
  const int32_t population = loop.data.population;
  if (!KnownPopulation(population)) return Route::OneByOne;
  if (SelfingPopulation(population)) {
    if (LayoutOf(population, code) == kNoLayout) return Route::OneByOne;
    const bool few = i.complete && j.complete && loop.data.populationSize <= kMostKeyed;
    return few && code == 11 && Symmetric(population) ? Route::Keyed : Route::Lanes;
  }
  const PopulationRow& row = Population(population);
  if (!OnlyTwoClasses(row, i) || !OnlyTwoClasses(row, j)) return Route::Lanes;
  if (!loop.direct.empty()) return Route::Direct;
  return loop.phases.coupling.empty() ? Route::Lanes : Route::Phases;
}

// The 3 by 3 counts of marker i's words with a run of the store, planes of H as given, transposed if asked
// for.
void CountTables(const Loop& loop, const PlaneStore& rowStore, const std::vector<uint64_t>& rowWords,
                 const PlaneStore& store, size_t from, size_t to, const std::array<size_t, 3>& planes,
                 bool transposed, std::array<std::array<uint32_t, kRun>, 9>& cells) {
  for (size_t x = 0; x < 3; ++x) {
    for (size_t y = 0; y < 3; ++y) {
      auto& cell = cells[transposed ? 3 * y + x : 3 * x + y];
      if (rowStore.present[planes[x]] && store.present[planes[y]]) {
        CountRow(loop.level, rowWords.data() + planes[x] * store.words, store.At(planes[y]), store.words,
                 store.stride, from, to, cell.data());
      } else {
        std::fill_n(cell.begin(), RoundUp(to - from), 0U);
      }
    }
  }
}

std::array<float, 9> TableOf(const Run& run, size_t k) {
  std::array<float, 9> table{};
  for (size_t cell = 0; cell < 9; ++cell) table[cell] = static_cast<float>(run.cells[cell][k]);
  return table;
}

// A table by itself. rec keeps its value where the estimators leave it.
void EstimateOne(const Loop& loop, int32_t code, const std::array<float, 9>& table, float& rec, float& lod) {
  float n = 0, stdErr = 0;
  for (const float count : table) n += count;
  if (n <= 0) {
    rec = 0.5f;
    lod = 0;
    return;
  }
  TwoPointBothPhases(loop.data.population, code, table.data(), rec, lod, stdErr);
  if (lod < 0) lod = 0;
}

// Populations of two classes with share 1/2: mixed and pure counts decide.
void ResolveDirect(Loop& loop, int32_t code) {
  Run& run = loop.run;
  const PopulationRow& row = Population(loop.data.population);
  const TwoClassPlaces at = PlacesOf(row);
  for (size_t k = 0; k < run.count; ++k) {
    const uint32_t mixed = run.cells[at.mixed1][k] + run.cells[at.mixed2][k];
    const uint32_t n = run.cells[at.both][k] + run.cells[at.other][k] + mixed;
    Known& known = loop.direct[size_t{n} * (n + 1) / 2 + mixed];
    if (known.crossovers < 0) {
      EstimateOne(loop, code, TableOf(run, k), known.rec, known.lod);
      known.crossovers = static_cast<float>(mixed * static_cast<uint32_t>(row.step));
      known.distance = DistanceFromRec(loop.data.mappingFunction, known.rec);
    }
    run.rec[k] = known.rec;
    run.lod[k] = known.lod;
    run.crossovers[k] = known.crossovers;
    run.distance[k] = known.distance;
  }
}

// The four counts that decide in F2 and F3, as a key.
uint64_t KeyOf(const Run& run, size_t k) {
  const auto& cells = run.cells;
  const uint64_t same = cells[0][k] + cells[8][k], unlike = cells[2][k] + cells[6][k];
  const uint64_t one = cells[1][k] + cells[3][k] + cells[5][k] + cells[7][k];
  return same << 48 | one << 32 | unlike << 16 | cells[4][k];
}

// Estimates the tables at the positions of fresh, each once.
void EstimateFresh(Loop& loop, int32_t code, size_t count) {
  Run& run = loop.run;
  const Genotypes& data = loop.data;
  for (size_t cell = 0; cell < 9; ++cell) {
    for (size_t f = 0; f < count; ++f)
      run.gathered[cell][f] = static_cast<float>(run.cells[cell][run.fresh[f]]);
    std::fill(run.gathered[cell].begin() + static_cast<std::ptrdiff_t>(count),
              run.gathered[cell].begin() + static_cast<std::ptrdiff_t>(RoundUp(count)), 0.0f);
  }
  EstimateLanes(loop.level, {data.population, code, data.mappingFunction, run.gathered[0].data(), kRun, count,
                             run.rec.data(), run.lod.data(), run.distance.data()});
}

void ResolveKeyed(Loop& loop, int32_t code) {
  Run& run = loop.run;
  MakeRoom(loop.remembered, run.count + 1);
  constexpr uint32_t kEmpty = ~0U;
  size_t fresh = 0;
  for (size_t k = 0; k < run.count; ++k) {
    const uint64_t key = KeyOf(run, k);
    bool added = false;
    run.slots[k] = key == 0 ? kEmpty : static_cast<uint32_t>(SlotOf(loop.remembered, key, added));
    if (added) run.fresh[fresh++] = static_cast<uint32_t>(k);
  }
  EstimateFresh(loop, code, fresh);
  for (size_t f = 0; f < fresh; ++f) {
    Remembered& known = loop.remembered.slots[run.slots[run.fresh[f]]];
    known.rec = run.rec[f];
    known.lod = run.lod[f];
    known.distance = run.distance[f];
  }
  constexpr Remembered kNothing = {0, 0.5f, 0, kUnlinkedDistance};
  for (size_t k = 0; k < run.count; ++k) {
    const Remembered& known = run.slots[k] == kEmpty ? kNothing : loop.remembered.slots[run.slots[k]];
    run.rec[k] = known.rec;
    run.lod[k] = known.lod;
    run.distance[k] = known.distance;
  }
}

void ResolveLanes(Loop& loop, int32_t code) {
  Run& run = loop.run;
  for (size_t cell = 0; cell < 9; ++cell) {
    for (size_t k = 0; k < run.count; ++k) run.gathered[cell][k] = static_cast<float>(run.cells[cell][k]);
    for (size_t k = run.count; k < RoundUp(run.count); ++k) run.gathered[cell][k] = 0;
  }
  EstimateLanes(loop.level, {loop.data.population, code, loop.data.mappingFunction, run.gathered[0].data(),
                             kRun, run.count, run.rec.data(), run.lod.data(), run.distance.data()});
}

void ResolveOneByOne(Loop& loop, int32_t code) {
  Run& run = loop.run;
  for (size_t k = 0; k < run.count; ++k) {
    EstimateOne(loop, code, TableOf(run, k), run.rec[k], run.lod[k]);
    run.distance[k] = DistanceFromRec(loop.data.mappingFunction, run.rec[k]);
  }
}

// Crossovers of a selfing population: one for an H beside a homozygote, two for two different homozygotes,
// and for a double heterozygote what is expected at the pair's frequency, r^2 / (1 - 2r + 2r^2).
void SelfingCrossovers(Run& run, const std::array<std::array<uint32_t, kRun>, 9>& cells) {
  for (size_t k = 0; k < run.count; ++k) {
    const uint32_t one = cells[1][k] + cells[3][k] + cells[5][k] + cells[7][k];
    const uint32_t two = cells[2][k] + cells[6][k], hetero = cells[4][k];
    const float r = run.rec[k];
    const float w = r * r / (1.0f - 2.0f * r + 2.0f * r * r);
    const auto sure = static_cast<float>(one + 2 * two);
    run.crossovers[k] = hetero == 0 ? sure : sure + w * static_cast<float>(hetero);
  }
}

void Crossovers(Loop& loop, const std::array<std::array<uint32_t, kRun>, 9>& cells) {
  Run& run = loop.run;
  const int32_t population = loop.data.population;
  if (SelfingPopulation(population)) return SelfingCrossovers(run, cells);
  if (!KnownPopulation(population)) {
    std::fill_n(run.crossovers.begin(), run.count, 0.0f);
    return;
  }
  const PopulationRow& row = Population(population);
  const TwoClassPlaces at = PlacesOf(row);
  for (size_t k = 0; k < run.count; ++k) {
    run.crossovers[k] =
        static_cast<float>((cells[at.mixed1][k] + cells[at.mixed2][k]) * static_cast<uint32_t>(row.step));
  }
}

void Resolve(Loop& loop, Route route, int32_t code) {
  switch (route) {
    case Route::Direct:
      return ResolveDirect(loop, code);
    case Route::Phases:
      return ResolvePhases(
          loop.phases, {loop.level, loop.data.population, loop.data.mappingFunction, loop.run.cells[0].data(),
                        loop.run.count, loop.run.rec.data(), loop.run.lod.data(), loop.run.crossovers.data(),
                        loop.run.distance.data()});
    case Route::Keyed:
      return ResolveKeyed(loop, code);
    case Route::Lanes:
      return ResolveLanes(loop, code);
    case Route::OneByOne:
      return ResolveOneByOne(loop, code);
  }
}

// Copies between a row of the caller's arrays and the run. first: the row's pair with marker 1.
void WriteRun(const Loop& loop, const PlaneStore& store, size_t from, size_t first) {
  const Run& run = loop.run;
  const PairResults& out = loop.results;
  if (static_cast<int32_t>(store.markers.size()) == loop.data.numMarkers) {
    const auto count = static_cast<std::ptrdiff_t>(run.count);
    std::copy(run.rec.begin(), run.rec.begin() + count, out.rec + first + from);
    std::copy(run.lod.begin(), run.lod.begin() + count, out.lod + first + from);
    std::copy(run.crossovers.begin(), run.crossovers.begin() + count, out.crossovers + first + from);
    std::copy(run.distance.begin(), run.distance.begin() + count, out.distance + first + from);
    return;
  }
  for (size_t k = 0; k < run.count; ++k) {
    const size_t p = first + static_cast<size_t>(store.markers[from + k]) - 1;
    out.rec[p] = run.rec[k];
    out.lod[p] = run.lod[k];
    out.crossovers[p] = run.crossovers[k];
    out.distance[p] = run.distance[k];
  }
}

// Pairs of marker i (words rowWords) with positions from..to of a store.
void OneRun(Loop& loop, int32_t i, const PlaneStore& rowStore, const std::vector<uint64_t>& rowWords,
            const PlaneStore& store, size_t from, size_t to) {
  Run& run = loop.run;
  run.count = to - from;
  int32_t code = 2020;
  MarkerPairCode(rowStore.category, store.category, code);
  const Route route = RouteOf(loop, rowStore, store, code);
  const bool transposed = TransposedCode(code);
  CountTables(loop, rowStore, rowWords, store, from, to, {kA, kHalf, kB}, transposed, run.cells);
  const auto first = static_cast<size_t>(PairIndex(i, 1)) - 1;
  if (route == Route::OneByOne) {  // some of these leave the caller's frequency
    for (size_t k = 0; k < run.count; ++k) {
      run.rec[k] = loop.results.rec[first + static_cast<size_t>(store.markers[from + k]) - 1];
    }
  }
  Resolve(loop, route, code);
  if (route != Route::Direct && route != Route::Phases) {
    const bool reduced = rowStore.reduced || store.reduced;
    if (reduced) {
      CountTables(loop, rowStore, rowWords, store, from, to, {kA, kHet, kB}, false, run.letters);
    }
    Crossovers(loop, reduced ? run.letters : run.cells);
  }
  WriteRun(loop, store, from, first);
}

// The words of one marker, plane by plane.
void RowWords(const PlaneStore& store, size_t position, std::vector<uint64_t>& words) {
  for (size_t k = 0; k < words.size(); ++k) words[k] = store.bits[k * store.stride + position];
}

// Rows against one run of a store's positions after the other, so that the run's planes stay near.
void StoreRuns(Loop& loop, const PlaneStore& store, const std::vector<std::array<size_t, 2>>& places) {
  std::vector<uint64_t> words(kPlanes * store.words);
  const size_t size = store.markers.size();
  for (size_t from = 0; from < size; from += kRun) {
    size_t to = from;
    for (int32_t i = store.markers[from] + 1; i <= loop.data.numMarkers; ++i) {
      while (to < std::min(from + kRun, size) && store.markers[to] < i) ++to;
      const auto [s, position] = places[static_cast<size_t>(i) - 1];
      RowWords(loop.stores[s], position, words);
      OneRun(loop, i, loop.stores[s], words, store, from, to);
    }
  }
}

// Where each marker stands: its store and position.
std::vector<std::array<size_t, 2>> PlacesOfMarkers(const Loop& loop) {
  std::vector<std::array<size_t, 2>> places(static_cast<size_t>(loop.data.numMarkers));
  for (size_t s = 0; s < loop.stores.size(); ++s) {
    const auto& markers = loop.stores[s].markers;
    for (size_t k = 0; k < markers.size(); ++k) places[static_cast<size_t>(markers[k]) - 1] = {s, k};
  }
  return places;
}

// What is remembered of populations of two classes, where it pays.
void OpenRemembered(Loop& loop) {
  const Genotypes& data = loop.data;
  if (!KnownPopulation(data.population) || SelfingPopulation(data.population)) return;
  const auto size = static_cast<size_t>(std::max(data.populationSize, 0));
  if (Population(data.population).share == 0.5f) {
    const size_t entries = (size + 1) * (size + 2) / 2;
    if (entries <= kMostDirect) loop.direct.assign(entries, Known{0.5f, 0, -1, 0});
  } else if (data.populationSize <= kMostPhaseLines &&
             PairCount(data.numMarkers) >= kPairsPerLine * data.populationSize) {
    OpenPhases(loop.phases);
  }
}

}  // namespace

void ComputePairTables(const Genotypes& data, const PairResults& results, Level level) {
  if (data.numMarkers < 2) return;
  const auto loop = std::make_unique<Loop>(Loop{data, results, level, MakePlanes(data), {}, {}, {}, {}});
  OpenRemembered(*loop);
  const auto places = PlacesOfMarkers(*loop);
  for (const PlaneStore& store : loop->stores) StoreRuns(*loop, store, places);
}

void ComputePairTables(const Genotypes& data, const PairResults& results) {
  ComputePairTables(data, results, BestLevel());
}

}  // namespace recombination

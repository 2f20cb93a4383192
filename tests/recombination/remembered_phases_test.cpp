#include "recombination/remembered_phases.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "recombination/map_functions.h"
#include "recombination/population_table.h"
#include "recombination/two_point.h"
#include "tests/reference/pair_tables_plain.h"

namespace {

using namespace recombination;

constexpr int32_t kUnequal[] = {5, 6, 9, 10, 11, 12, 17, 18, 19, 20};

struct Answer {
  float rec = 0.5f, lod = 0, crossovers = 0, distance = kUnlinkedDistance;
};
Answer OneByOne(int32_t population, int32_t mappingFunction, const float* table) {
  const PopulationRow& row = Population(population);
  const TwoClassPlaces at = PlacesOf(row);
  Answer x;
  float total = 0, stdErr = 0;
  for (int k = 0; k < 9; ++k) total += table[k];
  if (total > 0) TwoPointBothPhases(population, 11, table, x.rec, x.lod, stdErr);
  if (x.lod < 0) x.lod = 0;
  x.crossovers = (table[at.mixed1] + table[at.mixed2]) * static_cast<float>(row.step);
  x.distance = DistanceFromRec(mappingFunction, x.rec);
  return x;
}

struct OneRun {
  std::array<std::array<uint32_t, kMostPhasePairs>, 9> cells{};
  std::array<std::array<float, kMostPhasePairs>, 4> out{};
};

void ExpectLikeOneByOne(RememberedPhases& phases, Level level, int32_t population, OneRun& run,
                        size_t count) {
  constexpr int32_t kFunction = kHaldane;
  ResolvePhases(phases, {level, population, kFunction, run.cells[0].data(), count, run.out[0].data(),
                         run.out[1].data(), run.out[2].data(), run.out[3].data()});
  for (size_t k = 0; k < count; ++k) {
    float table[9];
    for (size_t cell = 0; cell < 9; ++cell) table[cell] = static_cast<float>(run.cells[cell][k]);
    const Answer x = OneByOne(population, kFunction, table);
    const float expected[4] = {x.rec, x.lod, x.crossovers, x.distance};
    for (size_t field = 0; field < 4; ++field) {
      ASSERT_EQ(std::bit_cast<uint32_t>(expected[field]), std::bit_cast<uint32_t>(run.out[field][k]))
          << "population " << population << " level " << static_cast<int>(level) << " pair " << k << " field "
          << field << ": " << expected[field] << ' ' << run.out[field][k];
    }
  }
}

// Counts that share a slot, in one run and from run to run; the largest that a key holds; runs of any size.
TEST(RememberedPhases, GiveWhatEachTableGivesByItself) {
  constexpr uint32_t kCounts[] = {0, 1, 2, 3, 31, 32, 33, 63, 64, 65, 96, 128, 1024, 2048, 4096, 8192, 16383};
  std::mt19937 draw(8);
  for (int32_t level = 0; level <= static_cast<int32_t>(BestLevel()); ++level) {
    for (const int32_t population : kUnequal) {
      const TwoClassPlaces at = PlacesOf(Population(population));
      RememberedPhases phases;
      OpenPhases(phases);
      const auto run = std::make_unique<OneRun>();
      for (const size_t count : {size_t{512}, size_t{1}, size_t{3}, size_t{511}, size_t{0}, size_t{512}}) {
        const size_t kinds = count == 511 ? 5 : std::size(kCounts);  // with few kinds most are met again
        for (size_t k = 0; k < kMostPhasePairs; ++k) {
          for (const size_t cell : {at.both, at.mixed1, at.mixed2, at.other}) {
            run->cells[cell][k] = kCounts[draw() % kinds];
          }
        }
        ExpectLikeOneByOne(phases, static_cast<Level>(level), population, *run, count);
        ExpectLikeOneByOne(phases, static_cast<Level>(level), population, *run, count);
      }
    }
  }
}

// Through the pair tables: so many pairs that phases are remembered, markers of very different numbers of lines, and
// beside them a category with a letter outside the two classes, which are not remembered.
TEST(RememberedPhases, ServeThePairTables) {
  std::mt19937 draw(21);
  for (const int32_t population : kUnequal) {
    for (const int32_t lines : {1, 40, 66}) {
      const PopulationRow& row = Population(population);
      const std::string both = row.mirrored ? "B" : "A", other = row.step == 1  ? "H"
                                                                 : row.mirrored ? "A"
                                                                                : "B";
      constexpr int32_t kMarkers = 380;
      std::vector<char> genotype;
      std::vector<int32_t> category;
      for (int32_t m = 0; m < kMarkers; ++m) {
        category.push_back(m % 9 == 0 ? 12 : 1);
        const auto seen = draw() % 101, rare = draw() % 60, flipped = draw() % 5;
        for (int32_t line = 0; line < lines; ++line) {
          const std::string& letter = (draw() % 100 < rare) == (flipped == 0) ? both : other;
          genotype.push_back(draw() % 100 >= seen ? 'X' : m % 9 == 0 && line == 0 ? 'R' : letter[0]);
        }
      }
      const size_t pairs = kMarkers * (kMarkers - 1) / 2;
      ASSERT_GE(pairs, size_t{1000} * static_cast<size_t>(lines)) << "too few to be remembered";
      const Genotypes data = {population, 1, lines, kMarkers, category.data(), genotype.data()};
      std::vector<float> plain(4 * pairs);
      reference::PairTablesPlain(data, {&plain[0], &plain[pairs], &plain[2 * pairs], &plain[3 * pairs]});
      for (int32_t level = 0; level <= static_cast<int32_t>(BestLevel()); ++level) {
        std::vector<float> fast(4 * pairs, -3);
        ComputePairTables(data, {&fast[0], &fast[pairs], &fast[2 * pairs], &fast[3 * pairs]},
                          static_cast<Level>(level));
        EXPECT_EQ(std::memcmp(plain.data(), fast.data(), plain.size() * sizeof(float)), 0)
            << "population " << population << " lines " << lines << " level " << level;
      }
    }
  }
}

}  // namespace

#include "recombination/pair_tables.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "recombination/pair_counts.h"
#include "recombination/remembered.h"
#include "tests/reference/pair_tables_plain.h"
#include "tests/reference/simulated_cross.h"

namespace {

using namespace recombination;

struct Tables {
  explicit Tables(int64_t n)
      : rec(Pairs(n), 0.125f), lod(Pairs(n), -3), crossovers(Pairs(n), -3), distance(Pairs(n), -3) {}
  static size_t Pairs(int64_t n) { return static_cast<size_t>(n * (n - 1) / 2); }
  PairResults Places() { return {rec.data(), lod.data(), crossovers.data(), distance.data()}; }
  std::vector<float> rec, lod, crossovers, distance;
};

// Bits, with every not-a-number alike.
bool Same(const std::vector<float>& a, const std::vector<float>& b) {
  for (size_t k = 0; k < a.size(); ++k) {
    if (std::memcmp(&a[k], &b[k], sizeof(float)) != 0 && !(std::isnan(a[k]) && std::isnan(b[k])))
      return false;
  }
  return true;
}

void ExpectSameOnEveryLevel(const Genotypes& data, const std::string& what) {
  Tables plain(data.numMarkers);
  reference::PairTablesPlain(data, plain.Places());
  for (int32_t level = 0; level <= static_cast<int32_t>(BestLevel()); ++level) {
    Tables fast(data.numMarkers);
    ComputePairTables(data, fast.Places(), static_cast<Level>(level));
    EXPECT_TRUE(Same(plain.rec, fast.rec)) << what << " rec, level " << level;
    EXPECT_TRUE(Same(plain.lod, fast.lod)) << what << " lod, level " << level;
    EXPECT_TRUE(Same(plain.crossovers, fast.crossovers)) << what << " crossovers, level " << level;
    EXPECT_TRUE(Same(plain.distance, fast.distance)) << what << " distance, level " << level;
  }
}

// Real-looking crosses of every population, with missing and dominant markers and both phases.
TEST(PairTables, EqualThePlainLoopOnSimulatedCrosses) {
  uint32_t seed = 0;
  for (int32_t population = 1; population <= 20; ++population) {
    for (const int32_t lines : {1, 63, 64, 65, 128, 200}) {
      for (const double missing : {0.0, 0.2}) {
        const reference::CrossPlan plan = {population, lines, 40, missing, 0.5, 0.3, 3, 0.08, ++seed};
        const reference::Cross cross = reference::SimulateCross(plan);
        const auto function = static_cast<int32_t>(seed % 5);
        ExpectSameOnEveryLevel(
            {population, function, lines, plan.markers, cross.category.data(), cross.genotype.data()},
            "population " + std::to_string(population) + " lines " + std::to_string(lines));
      }
    }
  }
}

// Letters and categories that a load refuses still have one defined answer.
TEST(PairTables, EqualThePlainLoopOnArbitraryLetters) {
  std::mt19937 draw(3);
  constexpr int32_t kMarkers = 37;
  for (int32_t population = 0; population <= 21; ++population) {
    for (const int32_t lines : {0, 5, 70}) {
      for (const std::string letters : {"AHBDRX", "ABX", "HX", "AHBX", "X?ab", "DBX", "ARHX"}) {
        std::vector<char> genotype(static_cast<size_t>(kMarkers * lines) + 1);
        for (char& letter : genotype) letter = letters[draw() % letters.size()];
        std::vector<int32_t> category(kMarkers);
        for (int32_t& one : category) one = std::array{1, 12, 10, 0}[draw() % (letters.size() < 5 ? 4 : 3)];
        ExpectSameOnEveryLevel({population, 1, lines, kMarkers, category.data(), genotype.data()},
                               "population " + std::to_string(population) + " letters " + letters);
      }
    }
  }
}

// Runs of more than one block, few distinct tables and many; a key beyond 16 bits.
TEST(PairTables, EqualThePlainLoopOnManyMarkersAndOnManyLines) {
  for (const int32_t population : {1, 5, 7, 8, 13}) {
    const reference::CrossPlan plan = {population, 30, 1100, 0.1, population == 13 ? 0.4 : 0.0,
                                       0.1,        5,  0.05, 9};
    const reference::Cross cross = reference::SimulateCross(plan);
    ExpectSameOnEveryLevel(
        {population, 2, plan.lines, plan.markers, cross.category.data(), cross.genotype.data()},
        "many markers, population " + std::to_string(population));
  }
  for (const int32_t population : {3, 7, 19}) {
    const reference::CrossPlan plan = {population, 70001, 4, 0.1, 0.3, 0.3, 1, 0.05, 2};
    const reference::Cross cross = reference::SimulateCross(plan);
    ExpectSameOnEveryLevel(
        {population, 1, plan.lines, plan.markers, cross.category.data(), cross.genotype.data()},
        "many lines, population " + std::to_string(population));
  }
}

TEST(PairTables, TableOfCases) {
  const struct {
    const char* rule;
    int32_t population;
    std::array<int32_t, 2> category;
    std::string first, second;
    float rec, lod, crossovers, distance;
  } cases[] = {
      {"identical F2 markers", 7, {1, 1}, "AAHHHHBB", "AAHHHHBB", 0, 3.612360f, 0, 0},
      {"no line in common", 7, {1, 1}, "AHBXXX", "XXXAHB", 0.5f, 0, 0, 1000},
      {"backcross in repulsion counts as it stands",
       1,
       {1, 1},
       "AAAAAHHHHH",
       "HHHHAAAAAH",
       0.8f,
       0.8371f,
       8,
       21.18245f},
      {"inbred lines cross over twice",
       4,
       {1, 1},
       "AAAAAAAABB",
       "AAAAAAABBB",
       0.0555556f,
       1.598457f,
       2,
       5.57859f},
      {"D and R add no crossovers", 7, {12, 10}, "DDDBBDDB", "AARRRRAR", 0, 0.647327f, 0, 0},
      {"a homozygote beside a B of a dominant marker does",
       7,
       {1, 12},
       "AAHHHBBA",
       "DDDDDBBB",
       0.2436054f,
       0.400756f,
       2,
       26.61982f},
  };
  for (const auto& one : cases) {
    const std::string genotype = one.first + one.second;
    Tables tables(2);
    ComputePairTables(
        {one.population, 1, static_cast<int32_t>(one.first.size()), 2, one.category.data(), genotype.data()},
        tables.Places());
    EXPECT_NEAR(tables.rec[0], one.rec, 2e-6) << one.rule;
    EXPECT_NEAR(tables.lod[0], one.lod, 2e-4) << one.rule;
    EXPECT_EQ(tables.crossovers[0], one.crossovers) << one.rule;
    EXPECT_NEAR(tables.distance[0], one.distance, 2e-4) << one.rule;
  }
}

// A double heterozygote adds r^2 / (1 - 2r + 2r^2) of the pair's own frequency, above 0.5 too.
TEST(PairTables, DoubleHeterozygotes) {
  for (const bool repulsion : {false, true}) {
    const std::string first = "AAAAHHHHHHBBBBAB",
                      second = repulsion ? "BBBBHHHHHHAAAAAB" : "AAAAHHHHHHBBBBBA";
    const std::string genotype = first + second;
    const int32_t category[2] = {1, 1};
    Tables tables(2);
    ComputePairTables({7, 1, 16, 2, category, genotype.data()}, tables.Places());
    const double r = static_cast<double>(tables.rec[0]);
    EXPECT_EQ(repulsion, r > 0.5);
    EXPECT_NEAR(tables.crossovers[0], (repulsion ? 16 : 4) + 6 * r * r / (1 - 2 * r + 2 * r * r), 1e-5);
  }
}

TEST(PairTables, FewerThanTwoMarkersTouchNothing) {
  const int32_t category[1] = {1};
  ComputePairTables({7, 1, 3, 1, category, "AHB"}, {nullptr, nullptr, nullptr, nullptr});
  ComputePairTables({7, 1, 3, 0, category, "AHB"}, {nullptr, nullptr, nullptr, nullptr});
}

TEST(Remembered, GrowsAndForgetsAtItsLimit) {
  RememberedTables tables;
  size_t most = 0;
  for (uint64_t key = 1; key < 2'000'000; ++key) {
    MakeRoom(tables, 1);
    bool added = false;
    const size_t slot = SlotOf(tables, key, added);
    ASSERT_TRUE(added);
    tables.slots[slot].rec = static_cast<float>(key);
    bool again = false;
    ASSERT_EQ(SlotOf(tables, key, again), slot);
    ASSERT_FALSE(again);
    if (key == 5000) {  // after the first growth the old keys are still there
      bool old = false;
      EXPECT_EQ(tables.slots[SlotOf(tables, 17, old)].rec, 17);
      EXPECT_FALSE(old);
    }
    most = std::max(most, tables.slots.size() * sizeof(Remembered));
  }
  EXPECT_LE(most, size_t{26} << 20);
}

TEST(Segregation, TableOfCases) {
  const float kNan = std::numeric_limits<float>::quiet_NaN();
  const struct {
    const char* rule;
    int32_t population, category, a, h, b;
    float chi, p;
  } cases[] = {
      {"F2 at its ratio", 7, 1, 10, 20, 10, 0, 1},
      {"F2, dominant, at its ratio", 7, 12, 30, 0, 10, 0, 1},
      {"F2, recessive", 7, 10, 20, 0, 20, 13.333333f, 2.6073e-4f},
      {"F2, two degrees of freedom", 7, 1, 20, 10, 10, 15, 5.530844e-4f},
      {"backcross leaves B out", 1, 1, 30, 20, 2, 2, 0.1572992f},
      {"backcross to P2 leaves A out", 2, 1, 5, 20, 30, 2, 0.1572992f},
      {"inbred lines leave H out", 4, 1, 30, 9, 20, 2, 0.1572992f},
      {"BC1 inbred lines", 6, 1, 20, 0, 60, 0, 1},
      {"BC2 inbred lines", 11, 1, 70, 0, 10, 0, 1},
      {"BC2F1 to P2", 10, 1, 0, 10, 30, 0, 1},
      {"BC2F2", 16, 1, 5, 10, 65, 0, 1},
      {"F3", 8, 1, 30, 20, 30, 0, 1},
      {"nothing seen", 7, 1, 0, 0, 0, kNan, 0},
      {"nothing that counts seen", 3, 1, 0, 7, 0, kNan, 0},
      {"unknown category leaves the statistic", 7, 0, 10, 10, 10, 3.84145882f, 0.05f},
  };
  for (const auto& one : cases) {
    float chi = 3.84145882f, p = -1;
    SegregationTest(one.population, one.category, one.a, one.h, one.b, chi, p);
    EXPECT_TRUE(std::isnan(one.chi) ? std::isnan(chi) : std::fabs(chi - one.chi) < 2e-6f)
        << one.rule << " " << chi;
    EXPECT_NEAR(p, one.p, 1e-7) << one.rule;
  }
}

TEST(MarkerResults, CountsFoldTheDominanceCodes) {
  const std::string row = "AAAHHBDDDDDRRRRRRX?";  // 3 A, 2 H, 1 B, 5 D, 6 R, 1 X, 1 other
  const struct {
    int32_t population;
    std::array<int32_t, 4> counts;
  } cases[] = {{1, {8, 8, 1, 1}},  {9, {8, 8, 1, 1}}, {2, {3, 7, 7, 1}},
               {10, {3, 7, 7, 1}}, {7, {8, 2, 7, 1}}, {3, {8, 2, 7, 1}}};
  for (const auto& one : cases) {
    const std::string genotype = row + row;
    const int32_t category[2] = {1, 1};
    std::array<int32_t, 2> a{}, h{}, b{}, x{};
    std::array<float, 2> chi{}, p{};
    Genotypes data = {one.population, 1, static_cast<int32_t>(row.size()), 2, category, genotype.data()};
    ComputeMarkerResults(data, {a.data(), h.data(), b.data(), x.data(), chi.data(), p.data()});
    for (const size_t m : {size_t{0}, size_t{1}}) {
      EXPECT_EQ((std::array{a[m], h[m], b[m], x[m]}), one.counts) << one.population;
    }
    data.populationSize = 0;
    ComputeMarkerResults(data, {a.data(), h.data(), b.data(), x.data(), chi.data(), p.data()});
    EXPECT_EQ((std::array{a[1], h[1], b[1], x[1]}), (std::array{0, 0, 0, 0}));
    EXPECT_TRUE(std::isnan(chi[0]));
    EXPECT_EQ(p[0], 0);
  }
}

}  // namespace

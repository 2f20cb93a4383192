#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "recombination/map_functions.h"
#include "recombination/multi_parent_tables.h"
#include "stats/distributions.h"
#include "tests/reference/multi_parent_cells.h"
#include "tests/reference/multi_parent_em.h"
#include "tests/reference/multi_parent_plain.h"
#include "tests/reference/multi_parent_simulated.h"

namespace {

using namespace recombination;

struct Tables {
  explicit Tables(int32_t n) {
    real.fill(std::vector<float>(static_cast<size_t>(n) * static_cast<size_t>(n), 0.375f));
  }
  MultiParentPairResults Places() { return {real[0].data(), real[1].data(), real[2].data()}; }
  std::array<std::vector<float>, 3> real;
};

void ExpectSameOnEveryLevel(const Genotypes& data, const std::string& what) {
  Tables plain(data.numMarkers);
  reference::MultiParentPairsPlain(data, plain.Places());
  for (int32_t level = 0; level <= static_cast<int32_t>(BestLevel()); ++level) {
    Tables fast(data.numMarkers);
    ComputeMultiParentPairs(data, fast.Places(), static_cast<Level>(level));
    for (size_t k = 0; k < 3; ++k) {
      for (size_t p = 0; p < plain.real[k].size(); ++p) {
        const float x = plain.real[k][p], y = fast.real[k][p];
        ASSERT_TRUE(x == y || (std::isnan(x) && std::isnan(y)))
            << what << " array " << k << " pair " << p << " level " << level << ": " << x << ' ' << y;
      }
    }
  }
}

TEST(MultiParentPairs, EqualThePlainLoop) {
  uint32_t seed = 0;
  for (const int32_t population : {1, 2, 3, 4}) {
    for (const int32_t lines : {0, 1, 20, 64, 65, 200}) {
      for (const double missing : {0.0, 0.3}) {
        const reference::ParentsPlan plan = {
            population, lines, lines == 64 ? 90 : 40, missing, lines == 64 ? 0.0 : 0.6, 3, 0.06, ++seed};
        const auto cross = reference::SimulateMultiParent(plan);
        ExpectSameOnEveryLevel({population, static_cast<int32_t>(seed % 5), lines, plan.markers,
                                cross.category.data(), cross.genotype.data()},
                               "population " + std::to_string(population));
      }
    }
  }
}

// Few lines, so that most tables have been met before, and more pairs than are estimated or copied at once.
TEST(MultiParentPairs, EqualThePlainLoopWhereTablesRepeat) {
  for (const int32_t population : {1, 3}) {
    const reference::ParentsPlan plan = {population, 9, population == 1 ? 290 : 90, 0.1, 1, 3, 0.06, 31};
    const auto cross = reference::SimulateMultiParent(plan);
    ExpectSameOnEveryLevel(
        {population, 1, plan.lines, plan.markers, cross.category.data(), cross.genotype.data()},
        "few lines, population " + std::to_string(population));
  }
}

// More pairs than wait for the lanes at once: of few mixes, and of many.
TEST(MultiParentPairs, EqualThePlainLoopWhereManyWait) {
  for (const double biallelic : {1.0, 0.0}) {
    const reference::ParentsPlan plan = {4, 40, 200, 0.05, biallelic, 3, 0.06, 17};
    const auto cross = reference::SimulateMultiParent(plan);
    ExpectSameOnEveryLevel({4, 1, plan.lines, plan.markers, cross.category.data(), cross.genotype.data()},
                           "biallelic " + std::to_string(biallelic));
  }
}

// More lines than the counts of a remembered table hold, in patterns of two classes and of more.
TEST(MultiParentPairs, EqualThePlainLoopOfMoreLinesThanAKeyHolds) {
  std::mt19937 draw(5);
  constexpr int32_t kLines = 70000;
  for (const int32_t population : {1, 2, 3, 4}) {
    const std::vector<int32_t> category = population <= 2
                                              ? std::vector<int32_t>{1122, 1212, 1133, 1234}
                                              : std::vector<int32_t>{11112222, 12121212, 11335577};
    std::vector<char> genotype(category.size() * kLines);
    for (char& letter : genotype) letter = draw() % 100 < 2 ? "BCEX"[draw() % 4] : 'A';
    ExpectSameOnEveryLevel(
        {population, 1, kLines, static_cast<int32_t>(category.size()), category.data(), genotype.data()},
        "population " + std::to_string(population));
  }
}

// Two alleles in half the parents each and as many lines in each class: some estimates go to where all classes are
// alike, and are given up on the way.
TEST(MultiParentPairs, EqualThePlainLoopOfEqualClasses) {
  for (const int32_t population : {1, 2, 3, 4}) {
    const int parents = population <= 2 ? 4 : 8;
    constexpr int32_t kLines = 24;
    std::vector<int32_t> category;
    std::string genotype;
    for (unsigned carriers = 1; carriers < 1U << parents; carriers += 2) {  // of the first parent's allele
      if (std::popcount(carriers) != parents / 2) continue;
      int32_t digits = 0;
      for (int k = 0; k < parents; ++k) digits = 10 * digits + ((carriers >> k & 1) != 0 ? 1 : 2);
      const char other = static_cast<char>('A' + std::countr_one(carriers));
      for (const int32_t period : {1, 2}) {
        category.push_back(digits);
        for (int32_t line = 0; line < kLines; ++line) genotype += line / period % 2 == 0 ? 'A' : other;
      }
    }
    ExpectSameOnEveryLevel(
        {population, 1, kLines, static_cast<int32_t>(category.size()), category.data(), genotype.data()},
        "population " + std::to_string(population));
  }
}

TEST(MultiParentPairs, EqualThePlainLoopOnArbitraryLetters) {
  std::mt19937 draw(7);
  constexpr int32_t kMarkers = 30, kLines = 50;
  for (const int32_t population : {0, 1, 2, 3, 4, 5}) {
    for (const std::string letters : {"ABCDEFGHX", "AB", "ACX", "XZ"}) {
      std::vector<char> genotype(size_t{kMarkers} * kLines);
      for (char& letter : genotype) letter = letters[draw() % letters.size()];
      std::vector<int32_t> category(kMarkers);
      for (int32_t& one : category) {
        for (int k = 0; k < 8; ++k)
          one = 10 * one + std::array{1, 1, 3, 8}[draw() % (letters.size() < 3 ? 2 : 4)];
        if (population <= 2) one %= 10000;
      }
      ExpectSameOnEveryLevel({population, 1, kLines, kMarkers, category.data(), genotype.data()}, letters);
    }
  }
}

TEST(MultiParentPairs, TableOfCases) {
  const struct {
    const char* rule;
    int32_t population, first, second;
    std::string firstLetters, secondLetters;
    float rec, lod;
  } cases[] = {
      {"no recombinant", 1, 1234, 1234, "ABCDABCD", "ABCDABCD", 0, 4.8165f},
      {"sisters count one meiosis of two", 1, 1234, 1234, "AAAABBBB", "AAABBBBB", 1.0f / 16, 3.1920f},
      {"4PRIL is converted after the limit", 2, 1234, 1234, "AAAABBBBCC", "AAABBBBBCC", 0.0357143f, 4.1317f},
      {"4PRIL at its limit: the LOD is that of the estimate before it", 2, 1234, 1234, "ABCDABCD", "BCDABCDA",
       0.5f, 0.9995f},
      {"one allele in all parents", 1, 1111, 1222, "AAAA", "ABBB", 0.5f, 0},
      {"alleles of two pairs of parents that tell nothing", 1, 1133, 1212, "AACC", "AAAA", 0.5f, 0},
      {"8PRIL, the equation is linear: as many lines as sisters and three times the recombinant", 4, 12345678,
       12345678, "ABCA", "ABCB", 0.1f, 0.9543f},
      {"no recombinant where a class is split: not a number", 1, 1222, 1222, "AAAA", "AAAA", NAN, NAN},
      {"the same, of a class of unrelated parents alone, which the iteration leaves out", 2, 1222, 1222,
       "AAAA", "AAAA", NAN, NAN},
      {"the same, eight parents", 3, 12345555, 12345555, "ABCD", "ABCD", NAN, NAN},
      {"8PRIL has no such root", 4, 12345555, 12345555, "ABCD", "ABCD", 0.5f, 0},
      {"no line in common", 3, 12345678, 12345678, "ABX", "XXC", 0.5f, 0},
  };
  for (const auto& c : cases) {
    const std::string genotype = c.firstLetters + c.secondLetters;
    const int32_t category[2] = {c.first, c.second};
    Tables t(2);
    ComputeMultiParentPairs(
        {c.population, 2, static_cast<int32_t>(c.firstLetters.size()), 2, category, genotype.data()},
        t.Places());
    if (std::isnan(c.rec)) {
      EXPECT_TRUE(std::isnan(t.real[0][0])) << c.rule << t.real[0][0];
      EXPECT_EQ(t.real[2][0], kUnlinkedDistance) << c.rule;
      continue;
    }
    EXPECT_NEAR(t.real[0][0], c.rec, 1e-5) << c.rule;
    EXPECT_NEAR(t.real[1][0], c.lod, 1e-3) << c.rule;
    EXPECT_GE(t.real[1][0], 0) << c.rule;
    EXPECT_EQ(t.real[2][0], DistanceFromRec(2, t.real[0][0])) << c.rule;
  }
}

// Linked markers against the meioses of the cross, and against the loop that merges no cells.
TEST(MultiParentPairs, EqualTheMeiosesOfTheCross) {
  for (const int32_t population : {1, 2, 3, 4}) {
    const reference::ParentsPlan plan = {population, 120, 50, 0.05, 0.6, 2, 0.05, 9};
    const auto cross = reference::SimulateMultiParent(plan);
    const Genotypes data = {population,           2, plan.lines, plan.markers, cross.category.data(),
                            cross.genotype.data()};
    Tables t(plan.markers), cells(plan.markers);
    ComputeMultiParentPairs(data, t.Places());
    reference::MultiParentPairsByCells(data, cells.Places());
    const auto lines = static_cast<size_t>(plan.lines);
    size_t linked = 0, p = 0;
    for (size_t i = 1; i < static_cast<size_t>(plan.markers); ++i) {
      for (size_t j = 0; j < i; ++j, ++p) {
        if (!(t.real[1][p] > 3) || t.real[0][p] > 0.3f) continue;
        ++linked;
        const reference::ParentsPair pair = {population,
                                             cross.category[i],
                                             cross.category[j],
                                             {cross.genotype.data() + i * lines, lines},
                                             {cross.genotype.data() + j * lines, lines}};
        const auto expected = reference::EstimateParents(pair, 1000, 1e-6);
        EXPECT_NEAR(static_cast<double>(t.real[0][p]), expected.rec, 3e-5)
            << pair.firstPattern << ' ' << pair.secondPattern;
        EXPECT_NEAR(static_cast<double>(t.real[1][p]), expected.lod, 0.03) << pair.firstPattern;
        EXPECT_NEAR(t.real[0][p], cells.real[0][p], 3e-5f) << pair.firstPattern;
        EXPECT_NEAR(t.real[1][p], cells.real[1][p], 0.03f) << pair.firstPattern;
      }
    }
    EXPECT_GT(linked, 150U) << population;
  }
}

// Estimates that still move after 1000 steps are given up, however near 0 they are.
TEST(MultiParentPairs, SlowEstimatesAreGivenUp) {
  const struct {
    int32_t population, first, second;
    std::string firstLetters, secondLetters;
    double at;  // where the estimate stands by then
  } cases[] = {
      {1, 1114, 1211, "AAAAAAAAAAAAAAAAAAAAAAAAADDDDD", "AAAAAAAAAAAAAAAAAAAABBBBBAAAAA", 0.0152},
      {3, 12111122, 11115115, "AAAAAAAAAAAAAAAAAAAAAABBBBBBBB", "AAAAAAAAAAAAAAAAAAEEEEAAAAAEEE", 0.0004},
      {3, 12222211, 11311131, "AAAAAAAAAABBBBBBBBBBBBBBBBBBBB", "AAAAAAACCCAAAAAAAAAAAAAAAACCCC", 0.0742},
  };
  for (const auto& c : cases) {
    const std::string genotype = c.firstLetters + c.secondLetters;
    const int32_t category[2] = {c.first, c.second};
    // the library's first marker is the later one
    const auto moving = reference::EstimateParents(
        {c.population, c.second, c.first, c.secondLetters, c.firstLetters}, 1000, 1e-6);
    EXPECT_NEAR(moving.rec, c.at, 1e-3) << c.first;
    EXPECT_GT(moving.change, 1e-6) << c.first;
    Tables t(2);
    ComputeMultiParentPairs({c.population, 1, 30, 2, category, genotype.data()}, t.Places());
    EXPECT_EQ(t.real[0][0], 0.5f) << c.first;
    EXPECT_EQ(t.real[1][0], 0) << c.first;
    EXPECT_EQ(t.real[2][0], kUnlinkedDistance) << c.first;
  }
}

TEST(MultiParentMarkers, CountsAndSegregation) {
  const struct {
    const char* rule;
    int32_t population, pattern;
    std::string letters;
    float chi, p;
  } cases[] = {
      {"expected counts are whole", 1, 1234, "AABBCDXX", 2.0f + 0, 1.0f - stats::CHIDF(2, 3)},
      {"shared alleles", 2, 1133, "AAACXXXX", 1, 1.0f - stats::CHIDF(1, 1)},
      {"one class", 1, 1111, "AAAAAAAX", 0, 1},
      {"letters beyond four parents are nobody's", 2, 1133, "AACEEHXX", 1, 1.0f - stats::CHIDF(1, 1)},
      {"letters beyond four of eight parents", 4, 11115555, "AAAEXXXX", 1, 1.0f - stats::CHIDF(1, 1)},
      {"seen where less than one is expected", 1, 1222, "ABBXXXXX", INFINITY, 0},
      {"not seen where less than one is expected", 1, 1222, "BBBXXXXX", NAN, NAN},
      {"nothing seen", 3, 11335577, "XXXXXXXX", NAN, NAN},
  };
  for (const auto& c : cases) {
    std::array<int32_t, 9> count{};
    float chi = -3, p = -3;
    MultiParentMarkerResults results{{}, &chi, &p};
    for (size_t k = 0; k < 9; ++k) results.count[k] = &count[k];
    ComputeMultiParentMarkers({c.population, 1, 8, 1, &c.pattern, c.letters.data()}, results);
    EXPECT_TRUE(chi == c.chi || (std::isnan(c.chi) && std::isnan(chi))) << c.rule << ' ' << chi;
    EXPECT_TRUE(p == c.p || (std::isnan(c.p) && std::isnan(p))) << c.rule << ' ' << p;
    const std::string_view nobodys = c.population <= 2 ? "EFGH" : "";
    for (size_t k = 0; k < 9; ++k) {
      const char letter = "ABCDEFGHX"[k];
      const auto seen = std::count(c.letters.begin(), c.letters.end(), letter);
      EXPECT_EQ(count[k], nobodys.find(letter) != std::string_view::npos ? 0 : seen)
          << c.rule << ' ' << letter;
    }
  }
}

// 500 lines of known crosses. The counts of 8PRIL as they are required give twice the frequency.
TEST(MultiParentTruth, EstimatesRecoverTheFrequency) {
  constexpr std::array<double, 4> kExpected = {0.05, 0.05, 0.05, 0.107};
  for (const int32_t population : {1, 2, 3, 4}) {
    reference::ParentsPlan plan = {population, 500, 200, 0, 0, 1, 0.05, 3};
    const auto cross = reference::SimulateMultiParent(plan);
    Tables t(plan.markers);
    ComputeMultiParentPairs(
        {population, 2, plan.lines, plan.markers, cross.category.data(), cross.genotype.data()}, t.Places());
    double sum = 0;
    int32_t count = 0;
    for (int32_t i = 2; i <= plan.markers; ++i) {
      const auto p = static_cast<size_t>((i - 1) * (i - 2) / 2 + i - 2);
      if (!(t.real[1][p] > 10)) continue;
      sum += static_cast<double>(t.real[0][p]);
      ++count;
    }
    ASSERT_GT(count, 60) << population;
    const double spread = population == 4 ? 0.02 : 0.012;
    EXPECT_LT(std::fabs(sum / count - kExpected[static_cast<size_t>(population) - 1]),
              4 * spread / std::sqrt(count))
        << population << ' ' << sum / count;
  }
}

}  // namespace

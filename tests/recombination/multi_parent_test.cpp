#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "recombination/map_functions.h"
#include "recombination/multi_parent_tables.h"
#include "stats/distributions.h"
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
    for (const int32_t lines : {1, 20, 64, 65, 200}) {
      for (const double missing : {0.0, 0.3}) {
        const reference::ParentsPlan plan = {
            population, lines, lines == 64 ? 160 : 40, missing, lines == 64 ? 0.0 : 0.6, 3, 0.06, ++seed};
        const auto cross = reference::SimulateMultiParent(plan);
        ExpectSameOnEveryLevel({population, static_cast<int32_t>(seed % 5), lines, plan.markers,
                                cross.category.data(), cross.genotype.data()},
                               "population " + std::to_string(population));
      }
    }
  }
}

TEST(MultiParentPairs, EqualThePlainLoopOnArbitraryLetters) {
  std::mt19937 draw(7);
  constexpr int32_t kMarkers = 30, kLines = 50;
  for (const int32_t population : {0, 1, 2, 3, 4, 5}) {
    for (const std::string letters : {"ABCDEFGHX", "AB", "ACX", "XZ"}) {
      std::vector<char> genotype(kMarkers * kLines);
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
      {"4PRIL at its limit", 2, 1234, 1234, "ABCDABCD", "BCDABCDA", 0.5f, -1},
      {"one allele in all parents", 1, 1111, 1222, "AAAA", "ABBB", 0.5f, 0},
      {"alleles of two pairs of parents that tell nothing", 1, 1133, 1212, "AACC", "AAAA", 0.5f, 0},
      {"no line in common", 3, 12345678, 12345678, "ABX", "XXC", 0.5f, 0},
  };
  for (const auto& c : cases) {
    const std::string genotype = c.firstLetters + c.secondLetters;
    const int32_t category[2] = {c.first, c.second};
    Tables t(2);
    ComputeMultiParentPairs(
        {c.population, 2, static_cast<int32_t>(c.firstLetters.size()), 2, category, genotype.data()},
        t.Places());
    EXPECT_NEAR(t.real[0][0], c.rec, 1e-5) << c.rule;
    if (c.lod >= 0) {
      EXPECT_NEAR(t.real[1][0], c.lod, 1e-3) << c.rule;
    }
    EXPECT_GE(t.real[1][0], 0) << c.rule;
    EXPECT_EQ(t.real[2][0], DistanceFromRec(2, t.real[0][0])) << c.rule;
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
      {"nothing seen", 3, 11335577, "XXXXXXXX", NAN, NAN},
  };
  for (const auto& c : cases) {
    std::array<int32_t, 9> count{};
    float chi = -3, p = -3;
    MultiParentMarkerResults results{{}, &chi, &p};
    for (size_t k = 0; k < 9; ++k) results.count[k] = &count[k];
    ComputeMultiParentMarkers({c.population, 1, 8, 1, &c.pattern, c.letters.data()}, results);
    EXPECT_TRUE(chi == c.chi || std::isnan(c.chi)) << c.rule << ' ' << chi;
    EXPECT_TRUE(p == c.p || (std::isnan(c.p) && std::isnan(p))) << c.rule << ' ' << p;
    for (size_t k = 0; k < 9; ++k) {
      EXPECT_EQ(count[k], std::count(c.letters.begin(), c.letters.end(), "ABCDEFGHX"[k])) << c.rule;
    }
  }
}

// 500 lines of known crosses. The M step of 8PRIL as it is required is biased and left out here.
TEST(MultiParentTruth, EstimatesRecoverTheFrequency) {
  for (const int32_t population : {1, 2, 3}) {
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
      sum += static_cast<double>(t.real[0][p]) - 0.05;
      ++count;
    }
    ASSERT_GT(count, 60);
    EXPECT_LT(std::fabs(sum / count), 4 * 0.012 / std::sqrt(count)) << population << ' ' << sum / count;
  }
}

}  // namespace

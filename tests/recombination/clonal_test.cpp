#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "recombination/clonal_tables.h"
#include "recombination/map_functions.h"
#include "stats/distributions.h"
#include "stats/generator.h"
#include "tests/recombination/clonal_compare.h"
#include "tests/reference/clonal_em.h"
#include "tests/reference/clonal_plain.h"
#include "tests/reference/multi_parent_simulated.h"

namespace {

using namespace recombination;

using reference::ClonalResults;
using tests::ExpectSameOnEveryLevel;

TEST(ClonalPairs, EqualThePlainLoop) {
  uint32_t seed = 0;
  for (const int32_t population : {1, 2}) {
    for (const int32_t lines : {1, 2, 5, 63, 64, 65, 128, 200}) {
      for (const double missing : {0.0, 0.3}) {
        const reference::ParentsPlan plan = {population, lines, 60, missing, 1, 3, 0.06, ++seed};
        const auto cross = reference::SimulateClonal(plan);
        ExpectSameOnEveryLevel({population, static_cast<int32_t>(seed % 5), lines, plan.markers,
                                cross.category.data(), cross.genotype.data()},
                               "simulated, lines " + std::to_string(lines));
      }
    }
  }
}

// So many lines that no table of two classes is kept.
TEST(ClonalPairs, EqualThePlainLoopAtManyLines) {
  for (const int32_t population : {1, 2}) {
    const reference::ParentsPlan plan = {population, 1500, 30, 0.1, 1, 2, 0.1, 17};
    const auto cross = reference::SimulateClonal(plan);
    ExpectSameOnEveryLevel(
        {population, 1, plan.lines, plan.markers, cross.category.data(), cross.genotype.data()},
        "many lines");
  }
}

// Letters and categories that a load refuses still have one defined answer; more than one run of pairs.
TEST(ClonalPairs, EqualThePlainLoopOnArbitraryLetters) {
  std::mt19937 draw(5);
  for (const int32_t population : {0, 1, 2}) {
    for (const int32_t lines : {0, 3, 70}) {
      for (const std::string letters : {"ABCDEFGHIJKX?", "IJK", "IKX", "ADIK", "JX"}) {
        const int32_t markers = lines == 3 ? 600 : 40;
        if (markers > 40 && letters != "IJK") continue;
        std::vector<char> genotype(static_cast<size_t>(markers * lines) + 1);
        for (char& letter : genotype) letter = letters[draw() % letters.size()];
        std::vector<int32_t> category(static_cast<size_t>(markers));
        for (int32_t& one : category) one = static_cast<int32_t>(markers > 40 ? 4 + draw() % 2 : draw() % 7);
        ExpectSameOnEveryLevel({population, 1, lines, markers, category.data(), genotype.data()},
                               "letters " + letters);
      }
    }
  }
}

struct PairCase {
  const char* rule;
  int32_t population, firstCategory, secondCategory;
  std::string first, second;
  float rec1, rec2, mean, lod1, lod2, lodMean;
  int32_t phase;
};
const float kNan = std::numeric_limits<float>::quiet_NaN();

void ExpectNear(float actual, float expected, const char* rule, const char* what) {
  if (std::isnan(expected)) {
    EXPECT_TRUE(std::isnan(actual)) << rule << ' ' << what << ' ' << actual;
  } else {
    EXPECT_NEAR(actual, expected, 2e-4) << rule << ' ' << what;
  }
}

TEST(ClonalPairs, TableOfCases) {
  const PairCase cases[] = {
      {"the high bit is the AB parent's", 1, 1, 1, "AAAAABBBBB", "AAAACBBBBD", 0.2f, 0, 0.1f, 0.8371f,
       3.0103f, 3.8474f, 1},
      {"the low bit is the CD parent's", 1, 1, 1, "AAAAACCCCC", "BBBBACCCCC", 0, 0.4f, 0.2f, 3.0103f, 0.0876f,
       3.0979f, 1},
      {"A=B shows the CD parent alone", 2, 2, 2, "EEEEFFFFFF", "FFFFEEEEEF", 0.5f, 0.9f, 0.1f, 0, 1.5983f,
       1.5983f, 2},
      {"A=B tells nothing of C=D", 2, 2, 3, "EEFF", "GGHH", 0.5f, 0.5f, 0.5f, 0, 0, 0, 1},
      {"no line in common", 2, 1, 1, "AABX", "XXXB", 0.5f, 0.5f, 0.5f, 0, 0, 0, 9},
      {"A=B with AB=CD", 1, 2, 4, "EEEEFFFFE", "IIIKKKKKJ", 0.5f, 0.125f, 0.125f, 0, 1.0992f, 1.0992f, 1},
      {"A=B with A=D,B=C, the other way round", 2, 2, 5, "EEEEFFFFE", "KKKIIIIIJ", 0.5f, 0.125f, 0.125f, 0,
       1.0992f, 1.0992f, 1},
      {"category 5 does not occur in a clonal F1", 1, 2, 5, "EEEEFFFF", "KKKIIIII", 0.5f, 0.5f, 0.5f, 0, 0, 0,
       1},
      {"the lower category comes first", 2, 5, 2, "KKKIIIIIJ", "EEEEFFFFE", 0.5f, 0.125f, 0.125f, 0, 1.0992f,
       1.0992f, 1},
      {"C=D in a double cross with category 5", 2, 3, 5, "GGGGHHHH", "IIIIKKKI", 0.125f, 0.5f, 0.125f,
       1.0992f, 0, 1.0992f, 1},
      {"0/0 is handed out", 1, 2, 4, "EEF", "JJJ", 0.5f, kNan, kNan, 0, 0, 0, 1},
      {"a complete pair of 1 and 4 is not a number: 0.5", 1, 1, 4, "AABBCCDD", "IIJJJJKK", 0, 0, 0.5f,
       1.2041f, 1.2041f, 3.6124f, 1},
      {"0/0 of 1 and 4: cells without a frequency add nothing", 1, 1, 4, "BC", "JJ", kNan, kNan, 0.5f, 0, 0,
       1.8062f, 1},
      {"what is not a number is 0 with category 5", 2, 1, 5, "BC", "JJ", kNan, kNan, 0, 0, 0, 1.8062f, 1},
      {"AB=CD twice, all double heterozygous: a tie at 0.5", 1, 4, 4, "JJJJ", "JJJJ", 0.5f, 0.5f, 0.5f, 0, 0,
       0, 1},
      {"AB=CD twice, a tie elsewhere goes to coupling", 1, 4, 4, "IIIIIIIIIIIIIIIIII", "IIIIIIIKJJJJJJJJJJ",
       1.0f / 3, 1.0f / 3, 1.0f / 3, 0.8854f, 0.8854f, 0.8854f, 1},
      {"A=D,B=C twice: equal terms", 2, 5, 5, "IIIKKKIKJJ", "IIIKKKKIJJ", 0.5f, 0.5f, 0.5f, 0, 0, 0, 1},
  };
  for (const PairCase& c : cases) {
    const std::string genotype = c.first + c.second;
    const int32_t category[2] = {c.firstCategory, c.secondCategory};
    ClonalResults t(2);
    ComputeClonalPairs({c.population, 2, static_cast<int32_t>(c.first.size()), 2, category, genotype.data()},
                       t.Places());
    const float expected[6] = {c.rec1, c.rec2, c.mean, c.lod1, c.lod2, c.lodMean};
    const char* names[6] = {"rec1", "rec2", "mean", "lod1", "lod2", "lodMean"};
    for (size_t k = 0; k < 6; ++k) ExpectNear(t.real[k][0], expected[k], c.rule, names[k]);
    for (size_t k = 0; k < 3; ++k) {
      EXPECT_EQ(t.real[6 + k][0], DistanceFromRec(2, t.real[k][0])) << c.rule;
    }
    EXPECT_EQ(t.phase[0], c.phase) << c.rule;
  }
}

// Lines of an ABCD marker with an intercross marker: A or B there with I, J or K here.
std::string IntercrossLetters(const std::array<int, 6>& count) {
  std::string first, second;
  for (size_t k = 0; k < count.size(); ++k) {
    first.append(static_cast<size_t>(count[k]), "ABABAB"[k]);
    second.append(static_cast<size_t>(count[k]), "IIJJKK"[k]);
  }
  return first + second;
}

// The phases that a mean is taken in: the AB parent's repulsion from above 0.5 on, the CD parent's from 0.5
// on. Each table has another mean in every other pair of phases.
TEST(ClonalPairs, MeanFollowsThePhasesFound) {
  const struct {
    const char* rule;
    std::array<int, 6> count;  // A or B with I, with J, with K
    bool flipAB, flipCD;
  } cases[] = {
      {"both in coupling", {7, 0, 3, 5, 1, 5}, false, false},
      {"CD in repulsion", {8, 7, 8, 0, 4, 0}, false, true},
      {"AB in repulsion", {5, 0, 7, 6, 7, 8}, true, false},
      {"both in repulsion", {1, 8, 4, 7, 8, 8}, true, true},
      {"CD at 0.5 counts as repulsion", {7, 4, 3, 8, 4, 1}, false, true},
      {"CD at 0.5 beside AB in repulsion", {1, 0, 7, 4, 8, 7}, true, true},
      {"AB at 0.5 counts as coupling", {7, 1, 2, 5, 1, 7}, false, false},
      {"AB at 0.5 beside CD in repulsion", {3, 6, 7, 0, 8, 1}, false, true},
  };
  for (const auto& c : cases) {
    const std::string letters = IntercrossLetters(c.count);
    const size_t lines = letters.size() / 2;
    const int32_t category[2] = {1, 4};
    const std::string first = letters.substr(0, lines), second = letters.substr(lines);
    for (const int32_t population : {1, 2}) {
      ClonalResults t(2);
      ComputeClonalPairs({population, 1, static_cast<int32_t>(lines), 2, category, letters.data()},
                         t.Places());
      const auto p1 = static_cast<double>(t.real[0][0]), p2 = static_cast<double>(t.real[1][0]);
      const double start = ((1 - std::fabs(0.5 - p1)) - std::fabs(0.5 - p2)) / 2;
      for (const bool ab : {false, true}) {
        for (const bool cd : {false, true}) {
          const bool used = population == 1 ? ab == c.flipAB && cd == c.flipCD : !ab && !cd;
          const double expected = reference::PooledFrequency({1, 4, first, second}, ab, cd, start);
          EXPECT_EQ(std::fabs(expected - static_cast<double>(t.real[2][0])) < 2e-5, used)
              << c.rule << ", population " << population << ' ' << ab << cd << ": " << expected << ' '
              << t.real[2][0];
        }
      }
    }
  }
}

// Runs that do not settle in 100 steps, or leave 0 to 1.
TEST(ClonalPairs, RunsThatDoNotSettle) {
  const struct {
    const char* rule;
    int32_t firstCategory, secondCategory;
    std::string first, second;
    float rec1, rec2, mean;
  } cases[] = {
      {"1 with 4, too many steps: the mean alone", 1, 4, "BBAABBBBBBBBBBBBBB", "IIJJJJJJJJJJJKKKKK", 5.0f / 7,
       2.0f / 7, 0.5f},
      {"1 with 5, too many steps: the mean alone", 1, 5, std::string(22, 'A'), "IIIIIIIIIIJJJJJJJJJJJK",
       1.0f / 11, 10.0f / 11, 0.5f},
      {"AB=CD twice, too many steps: all three", 4, 4, "IJJK", "IJJI", 0.5f, 0.5f, 0.5f},
      {"A=D,B=C twice, too many steps: all three", 5, 5, "JJJJJJJJJJJJJJ", "JJJJJJJKKKKKKK", 0.5f, 0.5f,
       0.5f},
      {"below 0 is 0", 4, 4, "IK", "IK", 0, 0, 0},
      {"1 with 4, below 0", 1, 4, "BBBBBABBB", "JJJJJKKKK", 1, 0.25f, 0},
      {"1 with 4, a first step above 1 stays there", 1, 4, "ABBBBBBB", "IIJJJJJK", 1.0f / 3, 1.0f / 3, 0.5f},
      {"1 with 4, above 1", 1, 4, "ABBBBBBBBAAAAAAABBB", "JJJJJJJJJKKKKKKKKKK", 1, 0.7f, 0.5f},
  };
  for (const auto& c : cases) {
    const std::string genotype = c.first + c.second;
    const int32_t category[2] = {c.firstCategory, c.secondCategory};
    const Genotypes data = {2, 1, static_cast<int32_t>(c.first.size()), 2, category, genotype.data()};
    ClonalResults t(2);
    ComputeClonalPairs(data, t.Places());
    ExpectNear(t.real[0][0], c.rec1, c.rule, "rec1");
    ExpectNear(t.real[1][0], c.rec2, c.rule, "rec2");
    EXPECT_EQ(t.real[2][0], c.mean) << c.rule;
    ExpectSameOnEveryLevel(data, c.rule);
  }
}

// What a pair of linked markers must come to by the gametes of the cross.
void ExpectLikeTheGametes(int32_t population, const reference::ClonalPair& pair,
                          const std::array<float, 6>& x, const std::string& what) {
  constexpr double kNear = 1e-4, kNearLod = 2e-3;
  const auto at = [&x](size_t k) { return static_cast<double>(x[k]); };
  const auto lod = [&pair](double ab, double cd) {
    return std::max(reference::ClonalLodScore(pair, ab, cd), 0.0);
  };
  const int a = pair.firstCategory, b = pair.secondCategory;
  if (b <= 3 || a == 2 || a == 3) {  // each parent by itself
    double rec[2];
    reference::ParentFrequencies(pair, rec);
    if (b == 3 || a == 3) rec[1] = 0.5;
    if (a == 2 || b == 2) rec[0] = 0.5;
    if (a == 2 && b == 3) rec[1] = 0.5;
    EXPECT_NEAR(at(0), rec[0], kNear) << what;
    EXPECT_NEAR(at(1), rec[1], kNear) << what;
    EXPECT_NEAR(at(3), lod(rec[0], 0.5), kNearLod) << what;
    EXPECT_NEAR(at(4), lod(0.5, rec[1]), kNearLod) << what;
    EXPECT_NEAR(at(5), lod(rec[0], rec[1]), kNearLod) << what;
  } else if (a == 1) {
    const bool phases = population == 1 && b == 4;
    const double start = ((1 - std::fabs(0.5 - at(0))) - std::fabs(0.5 - at(1))) / 2;
    const double mean =
        reference::PooledFrequency(pair, phases && x[0] > 0.5f, phases && x[1] >= 0.5f, start);
    EXPECT_NEAR(at(2), mean, kNear) << what;
    EXPECT_NEAR(at(5), lod(at(0), at(1)), kNearLod) << what;
  } else if (a == 4) {  // two intercross markers
    const double alike = reference::PooledFrequency(pair, false, false, 0.2),
                 unlike = reference::PooledFrequency(pair, false, true, 0.2);
    const double coupling = std::min(alike, 1 - alike);
    const bool mixed = population == 1 && std::min(unlike, 1 - unlike) < coupling;
    const double mean = mixed ? std::min(unlike, 1 - unlike) : coupling;
    EXPECT_NEAR(at(2), mean, kNear) << what;
    if (mixed || alike < 0.5) {
      EXPECT_NEAR(at(5), lod(mean, mixed ? 1 - mean : mean), kNearLod) << what;
    }
  }
}

TEST(ClonalPairs, EqualTheGametesOfTheCross) {
  std::array<std::array<int, 6>, 6> met{};
  for (const int32_t population : {1, 2}) {
    const reference::ParentsPlan plan = {population, 120, 60, 0.05, 1, 2, 0.06, 23};
    const auto cross = reference::SimulateClonal(plan);
    ClonalResults t(plan.markers);
    ComputeClonalPairs(
        {population, 2, plan.lines, plan.markers, cross.category.data(), cross.genotype.data()}, t.Places());
    for (int32_t i = 2; i <= plan.markers; ++i) {
      for (int32_t j = std::max(1, i - 3); j < i; ++j) {
        if ((i - 1) / 30 != (j - 1) / 30) continue;  // another chromosome
        auto first = static_cast<size_t>(j - 1), second = static_cast<size_t>(i - 1);
        if (cross.category[first] > cross.category[second]) std::swap(first, second);
        const auto lines = static_cast<size_t>(plan.lines);
        const int32_t a = cross.category[first], b = cross.category[second];
        ++met[static_cast<size_t>(a)][static_cast<size_t>(b)];
        const auto p = static_cast<size_t>((i - 1) * (i - 2) / 2 + j - 1);
        std::array<float, 6> x{};
        for (size_t k = 0; k < 6; ++k) x[k] = t.real[k][p];
        ExpectLikeTheGametes(population,
                             {a,
                              b,
                              {cross.genotype.data() + first * lines, lines},
                              {cross.genotype.data() + second * lines, lines}},
                             x, std::to_string(a) + " with " + std::to_string(b));
      }
    }
  }
  for (size_t a = 1; a <= 5; ++a) {
    for (size_t b = a; b <= 5; ++b) EXPECT_GT(met[a][b], 0) << a << ' ' << b;
  }
}

// Which parent shows repulsion is drawn, also where coupling wins; a second run in one process draws on.
TEST(ClonalPairs, DrawsOnceForEveryPairOfIntercrossMarkers) {
  const std::string mixed =
                        "IIIIJJJJJJJJKKKK"
                        "JJJJIIKKIIKKJJJJ",
                    same = mixed.substr(0, 16) + mixed.substr(0, 16);
  const int32_t category[2] = {4, 4};
  const stats::GeneratorState before = stats::SaveGenerator();
  for (const std::string& genotype : {mixed, same}) {
    for (int k = 0; k < 6; ++k) {
      const stats::GeneratorState now = stats::SaveGenerator();
      const bool swapped = stats::UniformDraw() > 0.5f;
      const float next = stats::UniformDraw();
      stats::RestoreGenerator(now);
      ClonalResults t(2);
      ComputeClonalPairs({1, 1, 16, 2, category, genotype.data()}, t.Places());
      if (genotype == mixed) {
        EXPECT_EQ(t.phase[0], swapped ? 3 : 2);
        EXPECT_EQ(t.real[swapped ? 0 : 1][0], 1.0f - t.real[2][0]);
      } else {
        EXPECT_EQ(t.phase[0], 1);
      }
      EXPECT_EQ(stats::UniformDraw(), next);
      ClonalResults none(2);
      const stats::GeneratorState after = stats::SaveGenerator();
      ComputeClonalPairs({2, 1, 16, 2, category, genotype.data()}, none.Places());
      EXPECT_EQ(stats::SaveGenerator().first, after.first) << "a double cross draws nothing";
      const std::string missing(16, 'X');
      const std::string empty = missing + genotype.substr(16);
      ComputeClonalPairs({1, 1, 16, 2, category, empty.data()}, none.Places());
      EXPECT_EQ(stats::SaveGenerator().first, after.first) << "an empty pair draws nothing";
    }
  }
  stats::RestoreGenerator(before);
}

TEST(ClonalMarkers, CountsAndSegregation) {
  const struct {
    int32_t category;
    std::string letters;
    float chi, p;
  } cases[] = {
      {1, "AABCDXXX", 0.6f, 1.0f - stats::CHIDF(0.6f, 3)},
      {2, "EEEFXAAA", 1, 1.0f - stats::CHIDF(1, 1)},
      {3, "GGHHXXXX", 0, 1},
      {4, "IIJJJJKK", 0, 1},
      {5, "IIIIIIII", 24, 1.0f - stats::CHIDF(24, 2)},
      {4, "XXXXXXXX", kNan, kNan},
      {6, "ABCDEFGH", -3, -3},
  };
  for (const auto& c : cases) {
    std::vector<std::vector<int32_t>> count(12, std::vector<int32_t>(1, -1));
    ClonalMarkerResults results{};
    for (size_t k = 0; k < 12; ++k) results.count[k] = count[k].data();
    float chi = -3, p = -3;
    results.chi = &chi;
    results.p = &p;
    ComputeClonalMarkers({1, 1, 8, 1, &c.category, c.letters.data()}, results);
    for (size_t k = 0; k < 12; ++k) {
      EXPECT_EQ(count[k][0], std::count(c.letters.begin(), c.letters.end(), "ABCDEFGHIJKX"[k])) << c.letters;
    }
    ExpectNear(chi, c.chi, "chi", c.letters.c_str());
    ExpectNear(p, c.p, "p", c.letters.c_str());
  }
}

// 500 lines of known crosses: no bias beyond sampling error, and the right phases.
TEST(ClonalTruth, EstimatesRecoverFrequencyAndPhase) {
  for (const int32_t population : {1, 2}) {
    reference::ParentsPlan plan = {population, 500, 300, 0, 1, 1, 0.1, 11};
    const auto cross = reference::SimulateClonal(plan);
    ClonalResults t(plan.markers);
    ComputeClonalPairs(
        {population, 2, plan.lines, plan.markers, cross.category.data(), cross.genotype.data()}, t.Places());
    double sum[2] = {};
    int32_t count[2] = {}, wrong = 0;
    for (int32_t i = 2; i <= plan.markers; ++i) {
      const auto p = static_cast<size_t>((i - 1) * (i - 2) / 2 + i - 2);
      const auto a = static_cast<size_t>(i - 2), b = a + 1;
      const int32_t low = std::min(cross.category[a], cross.category[b]),
                    high = std::max(cross.category[a], cross.category[b]);
      if (low == 4 && high >= 4 && population == 1) continue;  // two phases cannot be told apart
      if (high >= 4 && low >= 4 && low != high) continue;      // nor can the two parents
      for (size_t parent = 0; parent < 2; ++parent) {
        const float r = t.real[parent][p];
        const bool told = t.real[3 + parent][p] > 5;
        if (!told) continue;
        const auto& flipped = parent == 0 ? cross.flippedAB : cross.flippedCD;
        const bool repulsion = (flipped[a] ^ flipped[b]) != 0;
        wrong += (r > 0.5f) != repulsion ? 1 : 0;
        sum[parent] += static_cast<double>(repulsion ? 1 - r : r) - 0.1;
        ++count[parent];
      }
    }
    EXPECT_EQ(wrong, 0);
    for (size_t parent = 0; parent < 2; ++parent) {
      ASSERT_GT(count[parent], 60);
      EXPECT_LT(std::fabs(sum[parent] / count[parent]), 4 * 0.02 / std::sqrt(count[parent])) << population;
    }
  }
}

}  // namespace

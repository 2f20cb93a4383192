#include "recombination/two_point.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>

#include "tests/reference/two_point_plain.h"

namespace {

using namespace recombination;
using reference::Cells;
using Table = std::array<float, 9>;

struct Estimate {
  float rec = -7, stdErr = -7, lod = -7, pValue = -7, haldane = -7, kosambi = -7;
};

Estimate Solve(int32_t population, int32_t code, const Table& table, float before = -7) {
  Estimate e;
  e.rec = before;
  TwoPointRec(population, code, table.data(), e.rec, e.stdErr, e.lod, e.pValue, e.haldane, e.kosambi);
  return e;
}

bool Selfing(int32_t population) {
  return population == 7 || population == 8 || (population >= 13 && population <= 16);
}

int32_t Code(reference::Classes classes) {
  int32_t code = -1;
  MarkerPairCode(classes.first, classes.second, code);
  return code;
}

Table Expected(int32_t population, reference::Classes classes, double r, double size) {
  Cells cells = reference::CellsByGametes(population, r);
  if (Selfing(population)) cells = reference::FoldCells(cells, classes.first, classes.second);
  Table table{};
  for (size_t k = 0; k < 9; ++k) table[k] = static_cast<float>(size * cells[k]);
  return table;
}

TEST(MarkerPairCode, NineCodesAndTheInvalid) {
  const int32_t codes[9] = {11, 112, 110, 121, 1212, 1210, 101, 1012, 1010};
  for (size_t k = 0; k < 9; ++k) EXPECT_EQ(Code(reference::kClassPairs[k]), codes[k]);
  EXPECT_EQ(Code({0, 1}), 2020);
  EXPECT_EQ(Code({2, 3}), 2020);
  EXPECT_EQ(Code({12, 3}), -1);  // a first class that is valid leaves the code alone
}

// Two markers without co-dominance: where Newton's required start lies far off, it ends on a bound. In the F3
// a start on the lower bound stays there, as the first step is shorter than the tolerance.
bool StartsFarOff(int32_t population, int32_t code, double r) {
  if (code != 1212 && code != 1010) return false;
  return population == 8 ? r < 0.25 : (population == 15 || population == 16) && r < 0.15;
}

TEST(TwoPoint, StartOnTheLowerBoundOfTheF3StaysThere) {
  const Estimate e = Solve(8, 1212, Expected(8, {12, 12}, 0.1, 4000));
  EXPECT_NEAR(e.rec, 2e-6, 1e-9);
  EXPECT_LT(e.lod, 0);
  EXPECT_EQ(e.pValue, 1);
}

// What the estimator should find in a table of expected counts is the frequency that made it.
TEST(TwoPoint, FindsTheFrequencyOfExpectedTables) {
  for (int32_t population = 1; population <= 20; ++population) {
    for (const auto classes : reference::kClassPairs) {
      for (const double r : {0.03, 0.1, 0.2, 0.3, 0.4}) {
        if (StartsFarOff(population, Code(classes), r)) continue;
        const Table table = Expected(population, classes, r, 4000);
        const Estimate e = Solve(population, Code(classes), table);
        EXPECT_NEAR(e.rec, r, 3e-4) << population << " " << Code(classes);
        EXPECT_GT(e.lod, 0) << population << " " << Code(classes);
      }
    }
  }
}

// Exchanging the two genotypes of one marker turns coupling into repulsion, and r into its complement.
TEST(TwoPoint, RepulsionIsTheComplement) {
  for (int32_t population = 1; population <= 20; ++population) {
    const std::array<size_t, 9> flip =
        (population == 1 || population == 9)    ? std::array<size_t, 9>{3, 4, 5, 0, 1, 2, 6, 7, 8}
        : (population == 2 || population == 10) ? std::array<size_t, 9>{0, 1, 2, 6, 7, 8, 3, 4, 5}
                                                : std::array<size_t, 9>{6, 7, 8, 3, 4, 5, 0, 1, 2};
    for (const double r : {0.05, 0.2}) {
      const Table table = Expected(population, {1, 1}, r, 1000);
      Table other{};
      for (size_t k = 0; k < 9; ++k) other[k] = table[flip[k]];
      const Estimate here = Solve(population, 11, table), there = Solve(population, 11, other);
      EXPECT_NEAR(there.rec, 1 - here.rec, 1e-6) << population;
      EXPECT_NEAR(there.lod, here.lod, 1e-3) << population;
      EXPECT_EQ(there.stdErr, here.stdErr) << population;
      EXPECT_NEAR(there.kosambi, here.kosambi, 1e-3) << population;
    }
  }
}

// The classes of a marker in repulsion: dominant for the other parent.
TEST(TwoPoint, RepulsionOfDominantPairs) {
  for (const int32_t population : {7, 13, 14, 15, 16}) {
    for (const auto classes : {reference::Classes{12, 12}, {12, 10}, {10, 12}, {10, 10}}) {
      for (const double r : {0.1, 0.25}) {
        // The marker with exchanged alleles: the coupling table of the other class, mirrored in that marker.
        const bool column = !(classes.first == 10 && classes.second == 10);
        const reference::Classes coupled =
            column ? reference::Classes{classes.first, classes.second == 12 ? 10 : 12}
                   : reference::Classes{12, 10};
        Cells cells =
            reference::FoldCells(reference::CellsByGametes(population, r), coupled.first, coupled.second);
        Table table{};
        for (size_t k = 0; k < 9; ++k) {
          const size_t i = k / 3, j = k % 3;
          table[column ? 3 * i + (2 - j) : 3 * (2 - i) + j] = static_cast<float>(4000 * cells[k]);
        }
        const int32_t code = Code(classes);
        if (code == 1012 && population > 8) continue;  // read transposed, and flipped in the other marker
        EXPECT_NEAR(Solve(population, code, table).rec, 1 - r, 2e-3) << population << " " << code;
      }
    }
  }
}

// No frequency of either phase has a higher likelihood than the estimate's, on tables of real size.
TEST(TwoPoint, NoFrequencyIsLikelier) {
  std::mt19937 draw(11);
  int checked = 0;
  for (int32_t population = 1; population <= 20; ++population) {
    for (const auto classes : {reference::Classes{1, 1}, {1, 12}, {10, 1}}) {
      const bool transposed = TransposedCode(Code(classes));
      for (const double r : {0.05, 0.15, 0.3}) {
        const Table shares = Expected(population, classes, r, 1);
        std::discrete_distribution<size_t> cell(shares.begin(), shares.end());
        Table table{};
        for (int line = 0; line < 200; ++line) table[cell(draw)] += 1;
        const Estimate e = Solve(population, Code(classes), table);
        Cells counts{};
        for (size_t k = 0; k < 9; ++k) counts[k] = static_cast<double>(table[k]);
        const auto at = [&](double x) {
          const Cells cells = reference::CellsByGametes(population, x);
          return reference::LogLikelihoodOf(
              counts,
              Selfing(population) ? reference::FoldCells(cells, classes.first, classes.second) : cells);
        };
        if (e.rec > 0.5f) continue;
        double best = -1e30, bestRec = 0;
        for (double x = 0.0005; x < 0.5; x += 0.0005) {
          if (at(x) > best) {
            best = at(x);
            bestRec = x;
          }
        }
        ++checked;
        EXPECT_GE(at(static_cast<double>(e.rec)), best - 2e-4)
            << population << " " << Code(classes) << " " << transposed << " best " << bestRec << " ours "
            << e.rec;
        EXPECT_NEAR(e.lod, (at(static_cast<double>(e.rec)) - at(0.5)) / std::log(10.0), 1e-4) << population;
      }
    }
  }
  EXPECT_GT(checked, 150);
}

TEST(TwoPoint, TableOfCases) {
  const float kInf = std::numeric_limits<float>::infinity();
  const struct {
    const char* rule;
    int32_t population, code;
    Table table;
    float rec, lod, kosambi;
  } cases[] = {
      {"backcross, coupling", 1, 11, {40, 10, 0, 10, 40}, 0.2f, 8.371f, 21.182446f},
      {"backcross, repulsion", 1, 11, {10, 40, 0, 40, 10}, 0.8f, 8.371f, 21.182446f},
      {"backcross, loose", 1, 11, {30, 20, 0, 20, 30}, 0.4f, 0.874488f, 54.930614f},
      {"doubled haploids, unlinked", 3, 11, {25, 0, 25, 0, 0, 0, 25, 0, 25}, 0.5f, 0, 1000},
      {"doubled haploids, one half by rounding of neither phase",
       3,
       11,
       {10, 0, 10, 0, 0, 0, 0, 0, 0},
       0.5f,
       0,
       1000},
      {"inbred lines", 4, 11, {45, 0, 5, 0, 0, 0, 5, 0, 45}, 0.0555556f, 15.985f, 5.578590f},
      {"inbred lines, R below a half", 4, 11, {40, 0, 10, 0, 0, 0, 10, 0, 40}, 0.125f, 8.371f, 12.770641f},
      {"inbred lines, only recombinants", 4, 11, {0, 0, 25, 0, 0, 0, 25, 0, 0}, 1, 15.0515f, 0},
      {"F2, all of one parent", 7, 11, {50}, 0, 30.103f, 0},
      {"F2, only recombinants", 7, 11, {0, 0, 30}, 1, 18.0618f, 0},
      {"F2, dominant, complete linkage", 7, 1212, {0, 0, 0, 0, 75, 0, 0, 0, 25}, 0, 24.4219f, 0},
  };
  for (const auto& one : cases) {
    const Estimate e = Solve(one.population, one.code, one.table);
    EXPECT_NEAR(e.rec, one.rec, 2e-6) << one.rule;
    EXPECT_NEAR(e.lod, one.lod, 2e-3) << one.rule;
    EXPECT_NEAR(e.kosambi, one.kosambi, 2e-4) << one.rule;
    EXPECT_LT(e.stdErr, kInf) << one.rule;
    EXPECT_NEAR(e.pValue, std::erfc(std::sqrt(std::max(0.0, static_cast<double>(e.lod)) * std::log(10.0))),
                2e-7)
        << one.rule;
  }
}

TEST(TwoPoint, StandardErrors) {
  // Binomial in the backcross; none at a frequency on the bound.
  EXPECT_NEAR(Solve(1, 11, {40, 10, 0, 10, 40}).stdErr, std::sqrt(0.2 * 0.8 / 100), 1e-6);
  EXPECT_EQ(Solve(1, 11, {50, 0, 0, 0, 50}).stdErr, 0);
  EXPECT_EQ(Solve(3, 11, {50, 0, 0, 0, 0, 0, 0, 0, 50}).stdErr, 0);
  EXPECT_EQ(Solve(7, 11, {50}).stdErr, 0);
  EXPECT_EQ(Solve(7, 1212, {0, 0, 0, 0, 75, 0, 0, 0, 25}).stdErr, 0);
}

TEST(TwoPoint, NothingToEstimate) {
  const Estimate empty = Solve(7, 11, {});
  EXPECT_EQ(empty.rec, 0.5f);
  EXPECT_EQ(empty.stdErr, 0);
  EXPECT_EQ(empty.lod, 0);
  EXPECT_EQ(empty.pValue, 1);
  EXPECT_EQ(empty.haldane, 1000);
  EXPECT_EQ(empty.kosambi, 1000);
  // The caller's frequency stays, and the distances are its own.
  for (const auto& [population, code] :
       {std::pair{7, 2020}, {8, 2020}, {13, 99}, {16, 2020}, {0, 11}, {21, 11}}) {
    const Estimate e = Solve(population, code, {10, 3, 2, 1, 5}, 0.25f);
    EXPECT_EQ(e.rec, 0.25f) << population;
    EXPECT_EQ(e.lod, 0) << population;
    EXPECT_EQ(e.stdErr, 0) << population;
    EXPECT_EQ(e.pValue, 1) << population;
    EXPECT_NEAR(e.haldane, 34.657359, 1e-4) << population;
  }
  EXPECT_EQ(Solve(3, 2020, {40, 0, 10, 0, 0, 0, 10, 0, 40}).rec, 0.2f);  // two classes have no pair codes
}

TEST(TwoPoint, TransposedCodesReadTheFirstMarkerAlongTheFastIndex) {
  const Table table = {0, 30, 4, 0, 50, 20, 0, 5, 25};
  const Table turned = {0, 0, 0, 30, 50, 5, 4, 20, 25};
  for (const auto& [code, other] : {std::pair{112, 121}, {110, 101}, {1210, 1012}}) {
    for (const int32_t population : {7, 8, 13, 14, 15, 16}) {
      const Estimate a = Solve(population, code, table), b = Solve(population, other, turned);
      EXPECT_EQ(a.rec, b.rec) << code << " " << population;
      EXPECT_EQ(a.lod, b.lod) << code << " " << population;
      EXPECT_EQ(a.stdErr, b.stdErr) << code << " " << population;
    }
  }
}

// Equality keeps the first phase; a first phase that is not a number stands.
TEST(TwoPoint, ChoiceOfThePhase) {
  EXPECT_EQ(Solve(1, 11, {25, 25, 0, 25, 25}).rec, 0.5f);
  EXPECT_TRUE(std::isnan(Solve(4, 11, {0, 0, 0, 0, 9}).rec) || Solve(4, 11, {0, 0, 0, 0, 9}).rec == 0);
  float rec = 0, lod = 0, stdErr = 0;
  const Table onlyOutside = {0, 0, 5, 0, 0,
                             0, 0, 0, 0};  // pair (A, B) of a backcross to P2: no cell of the model
  TwoPointBothPhases(10, 11, onlyOutside.data(), rec, lod, stdErr);
  EXPECT_EQ(lod, 0);
}

TEST(NewtonStart, ValuesAndClamp) {
  const Table table = {20, 6, 2, 8, 30, 5, 1, 7, 21};
  const struct {
    int32_t population, code;
    Table table;
    double start;
  } cases[] = {
      {7, 11, table, (2 + 1 + 26 * 0.5) / (100.0 - 30)},
      {13, 112, table, (5 * 0.5 + 2) / (100.0 - 6 - 30 - 7)},
      {16, 121, table, (5 * 0.5 + 2) / (100.0 - 6 - 30 - 7)},
      {8, 110, table, (8 * 0.5 + 1) / (100.0 - 6 - 30 - 7)},
      {8, 1212, table, 1 - 4 * 0.21},
      {8, 1210, table, 0.04},
      {8, 1010, {20, 20, 0, 15, 45}, (1 - std::sqrt(4 * 0.2) + 1 - std::sqrt(4 * 0.2)) / 2},
      {8, 1010, {30, 60, 0, 10, 20}, 1e-6},  // first candidate not a number, the second below 0
      {13, 1212, {0, 0, 0, 0, 70, 6, 0, 5, 19}, 1 - std::cbrt(4 * 0.89 - 3)},
      {14, 1210, {0, 0, 0, 10, 40, 0, 20, 30, 0}, 8 * (0.2 - 0.125)},
      {14, 1010, {60, 5, 0, 7, 28}, 1 - std::cbrt(4 * 0.88 - 3)},
      {15, 1212, {0, 0, 0, 0, 90, 4, 0, 5, 1}, 2 * std::pow(0.01, 0.25)},
      {15, 1210, {0, 0, 0, 60, 30, 0, 4, 6, 0}, 0.04},
      {15,
       1010,
       {70, 8, 0, 6, 16},
       (2 - std::sqrt(std::sqrt(8 * 0.36) - 1) - std::sqrt(std::sqrt(8 * 0.86 - 4) - 1)) / 2},
      {16, 1212, {0, 0, 0, 0, 20, 10, 0, 12, 58}, 1 - 0.58},
      {16, 1010, {60, 10, 0, 10, 20}, (1 - 2 * std::pow(1 - 0.4, 0.25) + 2 * std::pow(1 - 0.6, 0.25)) / 2},
      {13, 2020, table, 1e-6},
      {7, 11, {0, 0, 0, 0, 9}, 1e-6},  // 0/0
      {7, 11, {0, 0, 9, 0, 0}, 0.999999},
  };
  for (const auto& one : cases) {
    float total = 0;
    for (const float count : one.table) total += count;
    EXPECT_NEAR(NewtonStart(one.population, one.code, one.table.data(), total), one.start, 3e-7)
        << one.population << " " << one.code;
  }
  // Two candidates that are not numbers have a start of their own.
  const Table neither = {0, 60, 0, 60, 10, 0, 0, 0, 0};
  EXPECT_EQ(NewtonStart(15, 1010, neither.data(), 130), 1e-5f);
}

// The iteration step by step, over the model's derivatives.
float NewtonByTheBook(int32_t population, int32_t code, const Table& table, float total) {
  float r = NewtonStart(population, code, table.data(), total);
  for (int count = 1;; ++count) {
    float g = 0, h = 0;
    PopulationModel(population, code, table.data(), r, nullptr, &g, &h);
    const float next = r - g / h;
    if (count > 100 || std::fabs(next - r) < 1e-6f)
      return next > 0.999999f ? 1.0f : next < 1e-6f ? 0.0f : next;
    if (h > 0) {
      if (r > 0.999999f) return 1;
      if (r < 1e-6f) return 0;
      r = r <= 0.5f ? r * 0.5f : (r + 1) * 0.5f;
    } else if (next > 0.999999f) {
      if (count > 1) return 1;
      r = (r + 1) * 0.5f;
    } else if (next < 1e-6f) {
      if (count > 1) return 0;
      r = r * 0.5f;
    } else {
      r = next;
    }
  }
}

TEST(Newton, StepsBoundsAndBisections) {
  std::mt19937 draw(5);
  int onBounds = 0, inside = 0;
  for (const int32_t population : {7, 8, 13, 14, 15, 16}) {
    for (const int32_t code : {11, 112, 110, 1212, 1210, 1010}) {
      if (population == 7 && code > 1000) continue;
      for (int trial = 0; trial < 300; ++trial) {
        Table table{};
        float total = 0;
        for (float& count : table) {  // from almost empty to lopsided tables
          count = draw() % 3 == 0 ? 0.0f : static_cast<float>(draw() % (1U << draw() % 9));
          total += count;
        }
        if (total == 0) continue;
        float rec = 0, lod = 0, stdErr = 0;
        TwoPointOnePhase(population, code, table.data(), rec, lod, stdErr);
        const float expected = NewtonByTheBook(population, code, table, total);
        EXPECT_TRUE(rec == expected || (std::isnan(rec) && std::isnan(expected)))
            << population << " " << code << " " << rec << " " << expected;
        ++(rec == 0 || rec == 1 ? onBounds : inside);
      }
    }
  }
  EXPECT_GT(onBounds, 100);
  EXPECT_GT(inside, 1000);
}

// Tables that lie on a bound or in a ratio of the model, where sums of derivatives cancel: the results are
// those of exact arithmetic. A marker that shows one class alone must not come out as linked.
TEST(Newton, DerivativesThatCancel) {
  const struct {
    int32_t population, code;
    Table table;
    float rec, lod;
  } cases[] = {
      {8, 110, {23, 22, 0, 0, 0, 0, 9}, 0.485231f, 0.004663f},
      {14, 1212, {0, 0, 0, 0, 21, 0, 0, 28, 0}, 0.443374f, 0.128125f},
      {14, 1210, {0, 0, 0, 0, 3, 0, 1, 8, 0}, 0.405234f, 0.071221f},
      {14, 1010, {0, 28, 0, 0, 21}, 1, 1.435723f},
      {14, 1010, {0, 1, 0, 2, 18}, 0.446463f, 0.019374f},
      {15, 1010, {15, 0, 0, 38}, 1, 3.070211f},
      {16, 1212, {0, 0, 0, 0, 0, 0, 0, 10, 24}, 1, 0.331364f},
      {16, 1010, {0, 0, 0, 0, 46}, 1, -0.088987f},
  };
  for (const auto& one : cases) {
    const Estimate e = Solve(one.population, one.code, one.table);
    EXPECT_NEAR(e.rec, one.rec, 2e-6) << one.population << " " << one.code;
    EXPECT_NEAR(e.lod, one.lod, 2e-5) << one.population << " " << one.code;
  }
}

}  // namespace

#include <gtest/gtest.h>

#include <cmath>

#include "recombination/two_point.h"
#include "tests/reference/two_point_plain.h"

namespace {

using namespace recombination;
using reference::Cells;

constexpr double kFrequencies[] = {0.001, 0.02, 0.11, 0.25, 0.37, 0.5, 0.64, 0.9};

bool Selfing(int32_t population) {
  return population == 7 || population == 8 || (population >= 13 && population <= 16);
}

// The cells that the model of a pair code stands for: the first marker along the fast index for three codes.
Cells ExpectedCells(int32_t population, reference::Classes classes, double r) {
  const Cells cells = reference::CellsByGametes(population, r);
  int32_t code = 0;
  MarkerPairCode(classes.first, classes.second, code);
  if (!Selfing(population)) return cells;
  return TransposedCode(code) ? reference::FoldCells(cells, classes.second, classes.first)
                              : reference::FoldCells(cells, classes.first, classes.second);
}

TEST(PopulationModel, CellsAreThoseOfTheEnumeratedGametes) {
  for (int32_t population = 1; population <= 20; ++population) {
    for (const auto classes : reference::kClassPairs) {
      int32_t code = 0;
      MarkerPairCode(classes.first, classes.second, code);
      for (const double r : kFrequencies) {
        const Cells expected = ExpectedCells(population, classes, r);
        float cells[9];
        PopulationModel(population, code, nullptr, static_cast<float>(r), cells, nullptr, nullptr);
        for (size_t k = 0; k < 9; ++k) {
          EXPECT_NEAR(cells[k], expected[k], 1e-7)
              << population << " " << code << " r " << r << " cell " << k;
        }
      }
    }
  }
}

// The three second derivatives that differ from the analytic ones by requirement have a test of their own.
bool OddSecond(int32_t population, int32_t code) {
  return (population == 8 && (code == 1210 || code == 1012)) || (population >= 10 && population <= 12);
}

constexpr float kTable[9] = {31, 12, 5, 14, 40, 9, 3, 11, 22};

TEST(PopulationModel, DerivativesAreThoseOfTheLikelihood) {
  constexpr double kStep = 1e-4;
  Cells counts{};
  for (size_t k = 0; k < 9; ++k) counts[k] = static_cast<double>(kTable[k]);
  for (int32_t population = 1; population <= 20; ++population) {
    for (const auto classes : reference::kClassPairs) {
      int32_t code = 0;
      MarkerPairCode(classes.first, classes.second, code);
      for (const double r : {0.03, 0.17, 0.33, 0.5, 0.71}) {
        const auto at = [&](double x) {
          return reference::LogLikelihoodOf(counts, ExpectedCells(population, classes, x));
        };
        const double first = (at(r + kStep) - at(r - kStep)) / (2 * kStep);
        const double second = (at(r + kStep) - 2 * at(r) + at(r - kStep)) / (kStep * kStep);
        float g = 0, h = 0;
        PopulationModel(population, code, kTable, static_cast<float>(r), nullptr, &g, &h);
        EXPECT_NEAR(g, first, 2e-4 * std::fabs(first) + 2e-2) << population << " " << code << " r " << r;
        if (!OddSecond(population, code)) {
          EXPECT_NEAR(h, second, 1e-3 * std::fabs(second) + 0.5) << population << " " << code << " r " << r;
        }
      }
    }
  }
}

// Written out a second time, in double, from their own formulas.
TEST(PopulationModel, SecondDerivativesThatAreRequiredToBeOdd) {
  for (const double r : {0.03, 0.17, 0.33, 0.5, 0.71}) {
    const double s = 1 - r, y = s * s, f = 1 + 2 * r;
    const auto t = [](size_t k) { return static_cast<double>(kTable[k]); };
    float h = 0;
    const auto second = [&](int32_t population, int32_t code) {
      PopulationModel(population, code, kTable, static_cast<float>(r), nullptr, nullptr, &h);
      return static_cast<double>(h);
    };
    const double u = r + r * r - 2 * r * r * r + r * r * r * r, w = -1 - 2 * r + 6 * r * r - 4 * r * r * r;
    const double e = 12 * (r * r - r) + 2, k = 1.5 - u, p = u + 1;
    const double c = 1 + r + r * r * r - 2 * r * r, d = 1 - 4 * r + 3 * r * r;
    const double f3 = (t(3) + t(7)) * (w - e * k) / (k * k) - t(6) / (r * r) +
                      t(6) / (c * c) * ((6 * r - 4) * c - d * d) + (w + e * p) * t(4) / (p * p);
    for (const int32_t code : {1210, 1012}) EXPECT_NEAR(second(8, code), f3, 1e-4 * std::fabs(f3)) << r;
    const double m = t(5) + t(7);
    const double bc2 = 4 * y * (-t(4) / ((y + 2) * (y + 2)) - m / ((y - 1) * (y - 1)) - t(8) / (y * y)) +
                       2 * (t(4) / (y + 2) + m / (y - 1) + t(8) / y);
    EXPECT_NEAR(second(10, 11), bc2, 1e-3 * std::fabs(bc2)) << r;
    for (const int32_t population : {11, 12}) {
      const double x = y / f, big = population == 11 ? t(0) : t(8), little = population == 11 ? t(8) : t(0);
      const double a = t(2) + t(6);
      const double ril =
          (-big / ((x + 6) * (x + 6)) - little / (x * x) - a / ((x - 1) * (x - 1))) * 4 / (f * f * f * f) -
          (big / (x + 6) + a / (x - 1) + little / x) * 8 / (f * f * f);
      EXPECT_NEAR(second(population, 11), ril, 1e-3 * std::fabs(ril)) << r << " " << population;
    }
  }
}

TEST(PopulationModel, UnknownPopulationsAndCodesHaveNoCells) {
  for (const int32_t population : {0, 21, -1, 7, 8, 16}) {
    float cells[9] = {1, 1, 1, 1, 1, 1, 1, 1, 1};
    PopulationModel(population, 2020, nullptr, 0.2f, cells, nullptr, nullptr);
    for (const float cell : cells) EXPECT_EQ(cell, 0) << population;
  }
}

}  // namespace

#include "stats/roots.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "stats/real_math.h"

namespace {

TEST(Cbrt, IsOddAndExactOnCubes) {
  for (int k = -100; k <= 100; ++k) {
    const auto x = static_cast<float>(k);
    EXPECT_EQ(stats::CBRT(x * x * x), x);
  }
  for (float x = 1e-38f; x < 1e38f; x *= 1.0093f) {
    const double exact = std::cbrt(static_cast<double>(x));
    EXPECT_NEAR(stats::CBRT(x), exact, 6.0e-8 * exact) << x;
    EXPECT_EQ(stats::CBRT(-x), -stats::CBRT(x));
  }
  EXPECT_NEAR(stats::CBRT(1e-45f), std::cbrt(1.40129846e-45), 1e-21);  // below the normal range
  EXPECT_TRUE(std::isnan(stats::CBRT(std::nanf(""))));
}

TEST(Zporc, Quadratics) {
  const struct {
    float a, b, c;
    std::complex<double> low, high;
  } cases[] = {
      {1, -0.3f, 0.02f, 0.1, 0.2},
      {1, -1, 0, 0, 1},
      {1, 1, 0, -1, 0},
      {1, 0, 0, 0, 0},
      {4, -4, 1, 0.5, 0.5},
      {1, 0, 1, {0, -1}, {0, 1}},
      {2, 2, 5, {-0.5, -1.5}, {-0.5, 1.5}},
      {1, -1e4f, 1, 1.00000001e-4, 9999.9999},  // the small root must not cancel
      {1e30f, -3e30f, 2e30f, 1, 2},
      {1e-30f, -3e-30f, 2e-30f, 1, 2},
  };
  for (const auto& one : cases) {
    const float coeff[3] = {one.c, one.b, one.a};
    std::complex<float> root[2];
    stats::ZPORC(2, coeff, root);
    std::sort(root, root + 2, [](auto x, auto y) {
      return x.real() != y.real() ? x.real() < y.real() : x.imag() < y.imag();
    });
    const std::complex<double> expected[2] = {one.low, one.high};
    for (int k = 0; k < 2; ++k) {
      EXPECT_NEAR(root[k].real(), expected[k].real(), 2e-7 * std::abs(expected[k])) << one.b << " " << one.c;
      EXPECT_NEAR(root[k].imag(), expected[k].imag(), 2e-7 * std::abs(expected[k]));
      EXPECT_EQ(expected[k].imag() == 0, root[k].imag() == 0);
      EXPECT_FALSE(root[k].real() == 0 && std::signbit(root[k].real()));
    }
  }
}

TEST(Zporc, OtherDegrees) {
  // (x - 1)(x - 2)(x + 3)(x^2 + 1), and 2x + 5
  const float five[6] = {6, -7, 6, -6, 0, 1};
  std::complex<float> root[5];
  stats::ZPORC(5, five, root);
  for (const std::complex<double> wanted : {std::complex<double>(1), {2}, {-3}, {0, 1}, {0, -1}}) {
    EXPECT_TRUE(std::any_of(root, root + 5, [&](std::complex<float> z) {
      return std::abs(std::complex<double>(z) - wanted) < 1e-6 && (wanted.imag() != 0 || z.imag() == 0);
    })) << wanted;
  }
  const float one[2] = {5, 2};
  stats::ZPORC(1, one, root);
  EXPECT_EQ(root[0], std::complex<float>(-2.5f));
}

TEST(ZporcDeathTest, DegreeOutsideItsRange) {
  const float coeff[1] = {1};
  std::complex<float> root[1];
  for (const int degree : {0, 101, -1}) {
    EXPECT_DEATH(stats::ZPORC(degree, coeff, root), "ZPORC.*NDEG is given as " + std::to_string(degree));
  }
}

TEST(RealMath, LogarithmsAreWithinOneUnitOfTheLastPlace) {
  for (float x = 1e-38f; x < 1e38f; x *= 1.00937f) {
    const double exact = std::log(static_cast<double>(x)), common = std::log10(static_cast<double>(x));
    EXPECT_NEAR(stats::Log(x), exact, 6.0e-8 * std::fabs(exact)) << x;
    EXPECT_NEAR(stats::Log10(x), common, 6.0e-8 * std::fabs(common)) << x;
  }
  EXPECT_EQ(stats::Log(1.0f), 0.0f);
  EXPECT_EQ(stats::Log10(1000.0f), 3.0f);
  EXPECT_NEAR(stats::Log10(1e-45f), std::log10(1.4012984643e-45), 1e-5);  // below the normal range
}

}  // namespace

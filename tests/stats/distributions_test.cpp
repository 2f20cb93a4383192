#include "stats/distributions.h"

#include <gtest/gtest.h>

#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/normal.hpp>
#include <cmath>
#include <limits>
#include <utility>

namespace {

TEST(Chidf, AgreesWithTheExactFunctionOnAGrid) {
  for (const float df : {0.5f, 0.75f, 1.0f, 2.0f, 3.0f, 4.5f, 10.0f, 24.0f, 25.0f, 25.5f, 40.0f, 65.0f}) {
    const boost::math::chi_squared exact(static_cast<double>(df));
    for (float x = 2.0f; x <= 200.0f; x *= 1.017f) {
      EXPECT_NEAR(stats::CHIDF(x, df), boost::math::cdf(exact, static_cast<double>(x)), 1e-7)
          << x << " " << df;
    }
    if (df > 25) continue;
    for (float x = 1e-11f; x < 2.0f; x *= 1.3f) {
      const double p = boost::math::cdf(exact, static_cast<double>(x));
      EXPECT_NEAR(stats::CHIDF(x, df), p, 2e-7 * p + 1e-37) << x << " " << df;
    }
  }
}

// The formula with the normal distribution of another library, its bounds at 5 and -18.8 included; and how
// far that is from the exact function.
TEST(Chidf, NormalApproximationAboveSixtyFive) {
  for (const double df : {65.5, 66.0, 100.0, 400.0, 5000.0}) {
    const double h = 2 / (9 * df);
    for (float x = 2; x < 3 * static_cast<float>(df); x *= 1.003f) {
      const double z = (std::cbrt(static_cast<double>(x) / df) - 1 + h) / std::sqrt(h);
      const double p = z > 5 ? 1 : z < -18.8055 ? 0 : boost::math::cdf(boost::math::normal(), z);
      const double given = stats::CHIDF(x, static_cast<float>(df));
      ASSERT_NEAR(given, p, 6e-8 * p + 1e-44) << x << " " << df;
      ASSERT_NEAR(given, boost::math::cdf(boost::math::chi_squared(df), static_cast<double>(x)), 3e-4)
          << x << " " << df;
    }
  }
}

TEST(Chidf, Clamps) {
  const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
  const struct {
    const char* rule;
    float x, df, expected;
  } cases[] = {
      {"zero", 0, 1, 0},
      {"below zero is a note", -3, 1, 0},
      {"below zero is told before the degrees of freedom", -3, 0.1f, 0},
      {"1e-12 and less", 1e-12f, 0.5f, 0},
      {"above 200", 200.1f, 65, 1},
      {"infinity", inf, 1, 1},
      {"many degrees, small statistic", 1, 30, 0},
      {"still many degrees", 1.99f, 25.5f, 0},
      {"250 at 10", 250, 10, 1},
      {"far above", 400, 100, 1},
      {"approximation below 2", 1.9f, 66, 0},
  };
  for (const auto& one : cases) EXPECT_EQ(stats::CHIDF(one.x, one.df), one.expected) << one.rule;
  EXPECT_TRUE(std::isnan(stats::CHIDF(nan, 1)));
  for (const auto& [x, df] : {std::pair(1.99f, 25.0f), {2.0f, 26.0f}, {2.0f, 66.0f}, {1.1e-12f, 0.5f}}) {
    EXPECT_GT(stats::CHIDF(x, df), 0.0f) << x << " " << df;
  }
}

TEST(ChidfDeathTest, TooFewDegreesOfFreedom) {
  EXPECT_DEATH(stats::CHIDF(1.0f, 0.4f), "TERMINAL ERROR.*CHIDF.*DF = 0.4, must be at least equal to 0.5");
}

}  // namespace

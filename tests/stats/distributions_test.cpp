#include "stats/distributions.h"

#include <gtest/gtest.h>

#include <boost/math/distributions/chi_squared.hpp>
#include <cmath>
#include <limits>

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

TEST(Chidf, NormalApproximationAboveSixtyFive) {
  for (const float df : {65.5f, 100.0f, 400.0f}) {
    const boost::math::chi_squared exact(static_cast<double>(df));
    for (float x = df * 0.3f; x < df * 2; x *= 1.02f) {
      EXPECT_NEAR(stats::CHIDF(x, df), boost::math::cdf(exact, static_cast<double>(x)), 3e-4)
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
  EXPECT_GT(stats::CHIDF(1.99f, 25.0f), 0.0f);
}

TEST(ChidfDeathTest, TooFewDegreesOfFreedom) {
  EXPECT_DEATH(stats::CHIDF(1.0f, 0.4f), "TERMINAL ERROR.*CHIDF.*DF = 0.4, must be at least equal to 0.5");
}

}  // namespace

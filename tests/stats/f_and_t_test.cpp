#include "stats/f_and_t.h"

#include <gtest/gtest.h>

#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <cmath>
#include <limits>

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

// Relative, so that small tails count too; one rounding to float is 6e-8.
void ExpectRounded(float value, double exact) {
  ASSERT_NEAR(value, exact, 1e-7 * std::fabs(exact) + 1e-37) << exact;
}

TEST(Fdf, AgreesWithTheExactFunctionOnAGrid) {
  for (const float dfn : {1.0F, 2.0F, 3.0F, 7.0F, 55.0F, 1000.0F, 1e5F, 1e6F}) {
    for (const float dfd : {0.5F, 1.0F, 2.0F, 5.0F, 165.0F, 1000.0F, 1e5F, 1e6F}) {
      const boost::math::fisher_f exact(static_cast<double>(dfn), static_cast<double>(dfd));
      for (float f = 1e-6F; f < 1e6F; f *= 1.31F) {
        SCOPED_TRACE(testing::Message() << f << " " << dfn << " " << dfd);
        ExpectRounded(stats::FDF(f, dfn, dfd), boost::math::cdf(exact, static_cast<double>(f)));
      }
    }
  }
  EXPECT_EQ(stats::FDF(0, 3, 4), 0);
  EXPECT_EQ(stats::FDF(-1, 3, 4), 0);
  EXPECT_EQ(stats::FDF(kInfinity, 3, 4), 1);
  EXPECT_TRUE(std::isnan(stats::FDF(kNaN, 3, 4)));
}

TEST(Tin, AgreesWithTheExactInverse) {
  for (const float df : {1.0F, 1.5F, 2.0F, 2.5F, 3.0F, 5.0F, 10.0F, 165.0F, 1e4F, 1e6F, 9e6F, 2e7F}) {
    const boost::math::students_t exact(static_cast<double>(df));
    for (const float p : {1e-30F, 1e-10F, 1e-6F, 0.001F, 0.025F, 0.2F, 0.4F, 0.499999F, 0.5000003F, 0.501F,
                          0.6F, 0.8F, 0.975F, 0.995F, 0.99999F, 0.99999994F}) {
      const double t = boost::math::quantile(exact, static_cast<double>(p));
      SCOPED_TRACE(testing::Message() << p << " " << df);
      ExpectRounded(stats::TIN(p, df), t);
    }
  }
  EXPECT_NEAR(stats::TIN(0.975F, 1), 12.706, 5e-4);
  EXPECT_EQ(stats::TIN(0.5F, 7), 0);
  EXPECT_EQ(stats::TIN(0.5F - 0x1p-25F, 7), 0);
  EXPECT_EQ(stats::TIN(0.5F + 0x1p-24F, 7), 0);
  EXPECT_GT(stats::TIN(0.5F + 0x1p-23F, 7), 0);
}

TEST(Anorin, AgreesWithTheExactInverse) {
  const boost::math::normal exact;
  for (float p = 1e-37F; p < 1; p = p < 0.01F ? p * 1.7F : p + 7e-4F) {
    if (std::fabs(p - 0.5F) > 1e-3F) {
      SCOPED_TRACE(p);
      ExpectRounded(stats::ANORIN(p), boost::math::quantile(exact, static_cast<double>(p)));
    }
  }
  EXPECT_EQ(stats::ANORIN(0.5F), 0);
  EXPECT_NEAR(stats::ANORIN(0.5F + 0x1p-24F), 0x1p-24 * 2.5066282746, 1e-13);
  EXPECT_NEAR(stats::ANORIN(std::numeric_limits<float>::denorm_min()), -14.12, 0.01);
}

TEST(FAndTDeathTest, PreconditionsHaveTheirWords) {
  EXPECT_DEATH(stats::FDF(1, 0, 1), "ERROR 5 from FDF\\.  DFN = 0 must be greater than 0\\.0\\.");
  EXPECT_DEATH(stats::FDF(-1, 1, kNaN), "ERROR 5 from FDF\\.  DFD = nan must be greater than 0\\.0\\.");
  EXPECT_DEATH(stats::TIN(0.5F, 0.5F),
               "ERROR 5 from TIN\\.  The input number of degrees of freedom, DF = 0.5, must be "
               "at least 1\\.");
  EXPECT_DEATH(stats::TIN(1, 3), "P = 1, must be in the open interval \\(0\\.0,1\\.0\\)\\.");
  EXPECT_DEATH(stats::ANORIN(0),
               "ERROR 5 from ANORIN\\.  The argument to the function must be greater than 0\\.0 and "
               "less than 1\\.0\\.  P = 0\\.");
  EXPECT_DEATH(stats::ANORIN(kNaN), "P = nan");
}

}  // namespace

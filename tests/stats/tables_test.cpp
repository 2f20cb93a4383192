// Frequency tables, ranks and the singular value decomposition.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "stats/frequency.h"
#include "stats/ranks.h"
#include "stats/svd.h"

namespace {

using stats::At;
using stats::Matrix;

// The classes as they are defined, each value tried against each class.
std::vector<float> PlainCounts(const std::vector<float>& x, int k, float xlo, float xhi) {
  const float h = (xhi - xlo) / static_cast<float>(k - 2);
  std::vector<float> counts(static_cast<std::size_t>(k), 0.0F);
  for (const float value : x) {
    counts.front() += value <= xlo ? 1.0F : 0.0F;
    counts.back() += value > xhi ? 1.0F : 0.0F;
    for (int i = 1; i <= k - 2 && value > xlo && value <= xhi; ++i) {
      if (static_cast<float>(i - 1) * h < value - xlo && value - xlo <= static_cast<float>(i) * h) {
        counts[static_cast<std::size_t>(i)] += 1;
      }
    }
  }
  return counts;
}

TEST(Owfrq, EveryValueIsInItsClass) {
  std::mt19937 random(5);
  const float huge = std::numeric_limits<float>::max();
  for (int trial = 0; trial < 3000; ++trial) {
    const int k = 3 + static_cast<int>(random() % (trial % 10 == 0 ? 2000 : 20));
    const float scale = std::ldexp(1.0F, static_cast<int>(random() % 200) - 100);
    const float xlo = static_cast<float>(random() % 100) * 0.1F * scale;
    const float xhi = xlo + (0.01F + static_cast<float>(random() % 100) * 0.3F) * scale;
    std::vector<float> x = {xlo, xhi, std::nextafter(xlo, huge), std::nextafter(xhi, huge), -huge, huge};
    for (int i = 0; i < 60; ++i) {  // many of them on a bound, or one step beside it
      const float h = (xhi - xlo) / static_cast<float>(k - 2);
      const float bound = xlo + static_cast<float>(random() % static_cast<unsigned>(k)) * h;
      x.push_back(i % 3 == 0 ? bound : std::nextafter(bound, i % 3 == 1 ? huge : -huge));
    }
    std::vector<float> counts(static_cast<std::size_t>(k)), middles = counts;
    stats::OWFRQ(x, k, counts.data(), xlo, xhi, middles.data());
    ASSERT_EQ(counts, PlainCounts(x, k, xlo, xhi)) << k << " " << xlo << " " << xhi;
  }
  const std::vector<float> wide = {-huge, 0, huge, std::numeric_limits<float>::infinity()};
  std::vector<float> counts(5), middles = counts;
  stats::OWFRQ(wide, 5, counts.data(), -huge, huge, middles.data());
  EXPECT_EQ(counts, PlainCounts(wide, 5, -huge, huge)) << "classes of infinite width";
}

TEST(Owfrq, MiddlesAndOneInnerClass) {
  float counts[5], middles[5];
  stats::OWFRQ(std::vector<float>{1, 2, 4, 9}, 5, counts, 1, 7, middles);
  EXPECT_EQ(std::vector<float>(middles, middles + 5), std::vector<float>({0, 2, 4, 6, 8}));
  stats::OWFRQ(std::vector<float>{1, 2, 4, 7, 9}, 3, counts, 1, 7, middles);
  EXPECT_EQ(std::vector<float>(counts, counts + 3), std::vector<float>({1, 3, 1}));
  EXPECT_EQ(std::vector<float>(middles, middles + 3), std::vector<float>({-2, 4, 10}));
}

TEST(TablesDeathTest, PreconditionsHaveTheirWords) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  float out[4];
  const std::vector<float> one = {1}, bad = {1, nan};
  EXPECT_DEATH(stats::OWFRQ({}, 3, out, 0, 1, out), "NOBS = 0\\.  There must be at least one observation\\.");
  EXPECT_DEATH(stats::OWFRQ(one, -7, out, 0, 1, out),
               "K = -7\\.  Since IOPT = 1, there must be at least three intervals\\.");
  EXPECT_DEATH(stats::OWFRQ(one, 3, out, nan, 1, out),
               "XLO = nan and XHI = 1\\.  The lower bound must be less than the upper bound\\.");
  EXPECT_DEATH(stats::OWFRQ(bad, 3, out, 0, 1, out),
               "X contains missing values\\.  Missing values are not allowed\\.");
  EXPECT_DEATH(stats::RANKS(one, out, 0),
               "NOBS = 1\\.  The number of observations, NOBS, must be greater than or equal to 2\\.");
}

TEST(Ranks, TiesShareTheLowest) {
  std::mt19937 random(9);
  for (int n = 2; n < 300; n += 7) {
    std::vector<float> x, score(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
      x.push_back((static_cast<float>(random() % (n % 2 == 0 ? 6U : 1000U)) - 3) *
                  (n % 3 == 0 ? -0.1F : 1e-39F));
    }
    stats::RANKS(x, score.data(), 0);
    for (std::size_t i = 0; i < x.size(); ++i) {
      const auto below = std::count_if(x.begin(), x.end(), [&](float other) { return other < x[i]; });
      ASSERT_EQ(score[i], static_cast<float>(below + 1));
    }
  }
  const float nan = std::numeric_limits<float>::quiet_NaN();
  float score[5];
  stats::RANKS(std::vector<float>{0.0F, -0.0F, -1, 0, 1}, score, 0);
  EXPECT_EQ(std::vector<float>(score, score + 5), std::vector<float>({2, 2, 1, 2, 5}));
  stats::RANKS(std::vector<float>{nan, 1, nan, 2, 2}, score, 0);  // somewhere, but inside
  EXPECT_TRUE(std::all_of(score, score + 5, [](float rank) { return rank >= 1 && rank <= 5; }));
}

double ColumnsProduct(const Matrix& m, int32_t i, int32_t j) {
  double sum = 0;
  for (int32_t row = 1; row <= m.rows; ++row) {
    sum += static_cast<double>(At(m, row, i)) * static_cast<double>(At(m, row, j));
  }
  return sum;
}

void ExpectOrthogonal(const Matrix& m, const std::string& what) {
  const int32_t step = m.columns > 200 ? 37 : 1;
  for (int32_t i = 1; i <= m.columns; i += step) {
    for (int32_t j = 1; j <= i; j += step) {
      ASSERT_NEAR(ColumnsProduct(m, i, j), i == j ? 1 : 0, 2e-6) << what << " " << i << " " << j;
    }
  }
}

void ExpectDecomposition(const Matrix& a, const std::string& what) {
  const stats::Decomposition d = stats::SVD(a, a.rows, a.columns);
  const std::size_t rank = d.s.size();
  ASSERT_EQ(rank, static_cast<std::size_t>(std::min(a.rows, a.columns)));
  ExpectOrthogonal(d.u, what + " u");
  ExpectOrthogonal(d.v, what + " v");
  for (std::size_t k = 0; k < rank; ++k) {
    ASSERT_GE(d.s[k], 0) << what;
    ASSERT_TRUE(k == 0 || d.s[k] <= d.s[k - 1]) << what;
  }
  double worst = 0;
  for (int32_t i = 1; i <= a.rows; ++i) {
    for (int32_t j = 1; j <= a.columns; ++j) {
      double sum = 0;
      for (std::size_t k = 0; k < rank; ++k) {
        const auto column = static_cast<int32_t>(k) + 1;
        sum += static_cast<double>(At(d.u, i, column)) * static_cast<double>(d.s[k]) *
               static_cast<double>(At(d.v, j, column));
      }
      worst = std::max(worst, std::fabs(sum - static_cast<double>(At(a, i, j))));
    }
  }
  EXPECT_LE(worst, 1e-6 * static_cast<double>(d.s[0]) + 1e-44) << what;
  const stats::Decomposition thin = stats::SVD(a, 1, 1);
  EXPECT_EQ(thin.u.values, std::vector<float>(d.u.values.begin(), d.u.values.begin() + a.rows)) << what;
}

TEST(Svd, RebuildsTablesOfEveryKind) {
  std::mt19937 random(4);
  std::normal_distribution<float> normal;
  const std::pair<int32_t, int32_t> sizes[] = {{1, 1}, {1, 6},   {6, 1},  {2, 2}, {5, 3},
                                               {3, 5}, {20, 20}, {60, 7}, {7, 60}};
  for (const auto& [m, n] : sizes) {
    const std::string size = std::to_string(m) + "x" + std::to_string(n) + " ";
    Matrix full = stats::MakeMatrix(m, n), flat = full, doubled = full, sparse = full, graded = full;
    for (int32_t i = 1; i <= m; ++i) {
      for (int32_t j = 1; j <= n; ++j) {
        At(full, i, j) = normal(random);
        At(flat, i, j) = static_cast<float>(i * j);  // rank 1
        At(doubled, i, j) =
            static_cast<float>((i + j) % 2 == 0 ? i : -i) + static_cast<float>(j % 2);  // rank 2
        At(graded, i, j) = normal(random) * std::pow(0.05F, static_cast<float>(j));
        At(sparse, i, j) = i == j && i % 2 == 0 ? 3.0F : 0.0F;  // empty rows and columns
      }
    }
    ExpectDecomposition(full, size + "random");
    ExpectDecomposition(flat, size + "rank 1");
    ExpectDecomposition(doubled, size + "rank 2");
    ExpectDecomposition(sparse, size + "sparse");
    ExpectDecomposition(graded, size + "graded");
    ExpectDecomposition(stats::MakeMatrix(m, n), size + "zero");
    for (const float scale : {1e36F, 1e-36F, 1e-43F}) {
      Matrix scaled = full;
      for (float& value : scaled.values) {
        value *= scale;
      }
      ExpectDecomposition(scaled, size + "scaled");
    }
  }
  Matrix large = stats::MakeMatrix(1000, 100);
  for (float& value : large.values) {
    value = normal(random);
  }
  const stats::Decomposition d = stats::SVD(large, 100, 100);
  ExpectOrthogonal(d.u, "1000x100 u");
  ExpectOrthogonal(d.v, "1000x100 v");
  ExpectDecomposition(large, "1000x100");
}

TEST(Svd, KnownValuesAndWhatIsNotFinite) {
  Matrix a = stats::MakeMatrix(2, 2);
  a.values = {3, 4, 0, 5};  // columns (3, 4) and (0, 5): singular values sqrt(45) and sqrt(5)
  const stats::Decomposition d = stats::SVD(a, 2, 2);
  EXPECT_FLOAT_EQ(d.s[0], std::sqrt(45.0F));
  EXPECT_FLOAT_EQ(d.s[1], std::sqrt(5.0F));
  for (const float bad : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
    a.values[2] = bad;
    const stats::Decomposition none = stats::SVD(a, 2, 1);
    EXPECT_TRUE(std::isnan(none.s[0]) && std::isnan(none.u.values[3]) && std::isnan(none.v.values[1]));
  }
}

}  // namespace

#include "stats/distributions.h"

#include <cmath>
#include <string>

#include "stats/kernel_error.h"

namespace stats {
namespace {

constexpr int kMaxTerms = 1000;  // 100 are enough for a at most 32.5 and x at most 100
constexpr double kPrecision = 1e-15;

// Regularised lower incomplete gamma function: the power series below a + 1, the continued fraction (Lentz)
// of the upper one above.
double LowerGamma(double a, double x) {
  const double front = std::exp(a * std::log(x) - x - std::lgamma(a));
  if (x < a + 1) {
    double term = 1 / a, sum = term;
    for (int k = 1; k < kMaxTerms && term > sum * kPrecision; ++k) {
      term *= x / (a + k);
      sum += term;
    }
    return front * sum;
  }
  double b = x + 1 - a, c = 1e300, d = 1 / b, fraction = d;
  for (int k = 1; k < kMaxTerms; ++k) {
    const double numerator = -k * (k - a);
    b += 2;
    d = 1 / (numerator * d + b);
    c = b + numerator / c;
    fraction *= d * c;
    if (std::fabs(d * c - 1) < kPrecision) break;
  }
  return 1 - front * fraction;
}

double Normal(double z) { return 0.5 * std::erfc(-z / std::sqrt(2.0)); }

// Normal approximation of Wilson and Hilferty; the bounds are where single precision sees no more.
float WilsonHilferty(float chsq, float df) {
  const double h = 2 / (9 * static_cast<double>(df));
  const double ratio = static_cast<double>(chsq) / static_cast<double>(df);
  const double z = (std::cbrt(ratio) - 1 + h) / std::sqrt(h);
  if (z > 5) return 1;
  if (z < -18.8055) return 0;
  return static_cast<float>(Normal(z));
}

}  // namespace

float CHIDF(float chsq, float df) {
  if (chsq < 0) return 0;
  if (df < 0.5f) {
    TerminalError("CHIDF", "The number of degrees of freedom of the distribution, DF = " + Shown(df) +
                               ", must be at least equal to 0.5.");
  }
  if (chsq <= 1e-12f) return 0;
  if (std::isnan(chsq) || std::isnan(df)) return chsq + df;
  if (df <= 65) {
    if (chsq > 200) return 1;
    if (df > 25 && chsq < 2) return 0;
    return static_cast<float>(LowerGamma(static_cast<double>(df) / 2, static_cast<double>(chsq) / 2));
  }
  if (chsq < 2) return 0;
  return WilsonHilferty(chsq, df);
}

}  // namespace stats

#include "stats/f_and_t.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <string>

#include "stats/kernel_error.h"

namespace stats {
namespace {

constexpr double kPrecision = 1e-15;
constexpr int kMaxTerms = 100000;     // some hundreds are enough below a million degrees of freedom
constexpr double kManyDegrees = 1e7;  // the t beyond is the normal with one term of correction
constexpr int kMaxSteps = 200;        // the bracket of the inverse is halved at worst

// Continued fraction of the incomplete beta function (Lentz); quick for x below (a + 1) / (a + b + 2).
double BetaFraction(double a, double b, double x) {
  constexpr double kTiny = 1e-300;
  const auto away = [](double value) { return std::fabs(value) < kTiny ? kTiny : value; };
  double c = 1;
  double d = 1 / away(1 - (a + b) * x / (a + 1));
  double fraction = d;
  for (int k = 1; k < kMaxTerms; ++k) {
    const double even = k * (b - k) * x / ((a + 2 * k - 1) * (a + 2 * k));
    d = 1 / away(1 + even * d);
    c = away(1 + even / c);
    fraction *= d * c;
    const double odd = -(a + k) * (a + b + k) * x / ((a + 2 * k) * (a + 2 * k + 1));
    d = 1 / away(1 + odd * d);
    c = away(1 + odd / c);
    fraction *= d * c;
    if (std::fabs(d * c - 1) < kPrecision) {
      break;
    }
  }
  return fraction;
}

// Regularised incomplete beta function at x; y is 1 - x, given apart so that neither is the other's rest.
double IncompleteBeta(double a, double b, double x, double y) {
  if (x <= 0 || y <= 0) {
    return x <= 0 ? 0 : 1;
  }
  const double front =
      std::exp(std::lgamma(a + b) - std::lgamma(a) - std::lgamma(b) + a * std::log(x) + b * std::log(y));
  if (x < (a + 1) / (a + b + 2)) {
    return front * BetaFraction(a, b, x) / a;
  }
  return 1 - front * BetaFraction(b, a, y) / b;
}

double NormalTail(double z) { return 0.5 * std::erfc(z / std::numbers::sqrt2); }
double NormalDensity(double z) { return std::exp(-z * z / 2) / std::sqrt(2 * std::numbers::pi); }

// The z > 0 whose upper tail is q <= 0.5: formula 26.2.23 of Abramowitz and Stegun (error below 4.5e-4), then
// Halley's steps, of which two reach the precision of a double.
double NormalFromTail(double q) {
  const double t = std::sqrt(-2 * std::log(q));
  double z =
      t - (2.515517 + t * (0.802853 + t * 0.010328)) / (1 + t * (1.432788 + t * (0.189269 + t * 0.001308)));
  for (int step = 0; step < 2; ++step) {
    const double newton = (NormalTail(z) - q) / NormalDensity(z);
    z += newton / (1 - z * newton / 2);
  }
  return z;
}

double StudentTail(double t, double df) {
  const double whole = df + t * t;
  return 0.5 * IncompleteBeta(df / 2, 0.5, df / whole, t * t / whole);
}

// The t > 0 whose upper tail is q < 0.5, by Newton's method on the logarithms of both, where the tail is
// nearly a straight line or bends one way; a step that leaves the bracket halves it instead.
double StudentFromTail(double q, double df) {
  const double logFront =
      std::lgamma((df + 1) / 2) - std::lgamma(df / 2) - 0.5 * std::log(df * std::numbers::pi);
  double low = std::log(1e-9);
  double high = std::log(1e60);
  double u = std::log(std::max(NormalFromTail(q), 1e-7));
  for (int step = 0; step < kMaxSteps; ++step) {
    const double t = std::exp(u);
    const double tail = StudentTail(t, df);
    (tail > q ? low : high) = u;
    const double density = std::exp(logFront - 0.5 * (df + 1) * std::log1p(t * t / df));
    double next = u + std::log(tail / q) * tail / (density * t);
    if (!(next > low && next < high)) {
      next = 0.5 * (low + high);
    }
    const bool settled = std::fabs(next - u) < 1e-13;
    u = next;
    if (settled) {
      break;
    }
  }
  return std::exp(u);
}

double StudentQuantile(double q, double df) {
  if (df == 1) {
    return 1 / std::tan(std::numbers::pi * q);
  }
  if (df == 2) {
    return (1 - 2 * q) / std::sqrt(2 * q * (1 - q));
  }
  if (df > kManyDegrees) {
    const double z = NormalFromTail(q);
    return z + (z * z + 1) * z / (4 * df);
  }
  return StudentFromTail(q, df);
}

bool IsProbability(float p) { return p > 0 && p < 1; }

}  // namespace

float FDF(float f, float dfn, float dfd) {
  if (!(dfn > 0)) {
    TerminalError("FDF", "DFN = " + Shown(dfn) + " must be greater than 0.0.");
  }
  if (!(dfd > 0)) {
    TerminalError("FDF", "DFD = " + Shown(dfd) + " must be greater than 0.0.");
  }
  if (f <= 0) {
    return 0;
  }
  if (std::isnan(f)) {
    return f;
  }
  if (std::isinf(f)) {
    return 1;
  }
  const double top = static_cast<double>(f) * static_cast<double>(dfn);
  const double whole = top + static_cast<double>(dfd);
  return static_cast<float>(IncompleteBeta(static_cast<double>(dfn) / 2, static_cast<double>(dfd) / 2,
                                           top / whole, static_cast<double>(dfd) / whole));
}

float TIN(float p, float df) {
  if (df < 1) {
    TerminalError("TIN",
                  "The input number of degrees of freedom, DF = " + Shown(df) + ", must be at least 1.");
  }
  if (!IsProbability(p)) {
    TerminalError(
        "TIN", "The input probability value, P = " + Shown(p) + ", must be in the open interval (0.0,1.0).");
  }
  if (std::isnan(df) || std::fabs(p - 0.5F) <= 0x1p-24F) {
    return std::isnan(df) ? df : 0;
  }
  const double tail = p < 0.5F ? static_cast<double>(p) : 1 - static_cast<double>(p);
  const double t = StudentQuantile(tail, static_cast<double>(df));
  return static_cast<float>(p < 0.5F ? -t : t);
}

float ANORIN(float p) {
  if (!IsProbability(p)) {
    TerminalError("ANORIN", "The argument to the function must be greater than 0.0 and less than 1.0.  P = " +
                                Shown(p) + ".");
  }
  if (p == 0.5F) {
    return 0;
  }
  const double z = NormalFromTail(p < 0.5F ? static_cast<double>(p) : 1 - static_cast<double>(p));
  return static_cast<float>(p < 0.5F ? -z : z);
}

}  // namespace stats

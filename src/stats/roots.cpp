#include "stats/roots.h"

#include <array>
#include <cmath>
#include <string>

#include "stats/kernel_error.h"
#include "stats/log_lanes.h"

namespace stats {
namespace {

using Complex = std::complex<double>;

// In double the products of two floats are exact, so that the discriminant has the right sign.
void QuadraticRoots(const float* coeff, std::complex<float>* root) {
  const double a = coeff[2], b = coeff[1], c = coeff[0];
  const double discriminant = b * b - 4 * a * c;
  if (discriminant < 0) {
    const auto re = static_cast<float>(-b / (2 * a)) + 0.0f;  // no negative zero
    const auto im = static_cast<float>(std::sqrt(-discriminant) / (2 * a));
    root[0] = {re, im};
    root[1] = {re, -im};
    return;
  }
  const double q = -0.5 * (b + std::copysign(std::sqrt(discriminant), b));  // no cancellation
  root[0] = {static_cast<float>(q / a) + 0.0f, 0.0f};
  root[1] = {q == 0 ? 0.0f : static_cast<float>(c / q) + 0.0f, 0.0f};
}

// Simultaneous iteration (Durand and Kerner) on the monic polynomial, from points on a spiral.
void ManyRoots(int32_t ndeg, const float* coeff, std::complex<float>* root) {
  std::array<Complex, 100> z;
  double radius = 0;
  for (int32_t k = 0; k < ndeg; ++k) {
    radius =
        std::max(radius, 1 + std::fabs(static_cast<double>(coeff[k]) / static_cast<double>(coeff[ndeg])));
  }
  for (int32_t k = 0; k < ndeg; ++k) {
    z[static_cast<size_t>(k)] = std::polar(radius * (k + 1) / ndeg, 0.4 + 2.4 * k);
  }
  for (int iteration = 0; iteration < 2000; ++iteration) {
    double change = 0;
    for (int32_t k = 0; k < ndeg; ++k) {
      Complex& at = z[static_cast<size_t>(k)];
      Complex value = 1, others = 1;
      for (int32_t power = ndeg - 1; power >= 0; --power) {
        value = value * at + static_cast<double>(coeff[power]) / static_cast<double>(coeff[ndeg]);
      }
      for (int32_t m = 0; m < ndeg; ++m) {
        if (m != k) others *= at - z[static_cast<size_t>(m)];
      }
      const Complex step = value / others;
      at -= step;
      change = std::max(change, std::abs(step) / (1e-30 + std::abs(at)));
    }
    if (change < 1e-14) break;
  }
  for (int32_t k = 0; k < ndeg; ++k) {
    const Complex at = z[static_cast<size_t>(k)];
    const bool real = std::fabs(at.imag()) <= 1e-7 * std::abs(at);  // below single precision
    root[k] = {static_cast<float>(at.real()), real ? 0.0f : static_cast<float>(at.imag())};
  }
}

}  // namespace

float CBRT(float x) {
  if (x == 0 || !std::isfinite(x)) return x;
  double root = 0;
  CbrtLanes<double, uint64_t>(std::fabs(static_cast<double>(x)), root);
  return std::copysign(static_cast<float>(root), x);
}

void ZPORC(int32_t ndeg, const float* coeff, std::complex<float>* root) {
  if (ndeg < 1 || ndeg > 100) {
    TerminalError(
        "ZPORC",
        "The degree of the polynomial must be less than 101 and greater than zero.NDEG is given as " +
            std::to_string(ndeg) + ".");
  }
  if (ndeg == 1) {
    root[0] = {(0.0f - coeff[0]) / coeff[1], 0.0f};
  } else if (ndeg == 2) {
    QuadraticRoots(coeff, root);
  } else {
    ManyRoots(ndeg, coeff, root);
  }
}

}  // namespace stats

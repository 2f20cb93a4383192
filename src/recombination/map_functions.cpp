#include "recombination/map_functions.h"

#include <algorithm>
#include <cmath>
#include <complex>

#include "recombination/lane_math.h"
#include "stats/real_math.h"
#include "stats/roots.h"

namespace recombination {
namespace {

constexpr float kFarthest = 999.0f;  // distances from here on are unlinked

float Exp(float x) { return static_cast<float>(std::exp(static_cast<double>(x))); }

}  // namespace

float RecFromDistance(int32_t mapFunction, float distance) {
  if (distance < 0) return 0;
  if (!(distance < kFarthest)) return 0.5f;
  float rec = 0;
  if (mapFunction == kKosambi) {
    const float x = Exp(distance / 25.0f);
    rec = (x - 1.0f) * 0.5f / (x + 1.0f);
  } else if (mapFunction == kHaldane) {
    rec = (1.0f - Exp(distance / -50.0f)) * 0.5f;
  } else if (mapFunction == kMorgan) {
    rec = distance / 100.0f;
  }
  return std::min(0.5f, rec);
}

float DistanceFromRec(int32_t mapFunction, float rec) { return DistanceOf<float>(mapFunction, rec); }

float QuadraticRecRoot(float a, float b, float c) {
  if (a == 0) return b == 0 ? 0.5f : (0.0f - c) / b;
  const float coeff[3] = {c, b, a};
  std::complex<float> root[2];
  stats::ZPORC(2, coeff, root);
  float smallest = 1;
  for (const auto& z : root) {
    if (z.imag() == 0 && z.real() >= 0 && z.real() <= 0.5f) smallest = std::min(smallest, z.real());
  }
  return std::min(0.5f, smallest);
}

float LogLikelihood(int32_t n, const float* counts, const float* probabilities) {
  float sum = 0;
  for (int32_t k = 0; k < n; ++k) {
    if (probabilities[k] > 0) sum += counts[k] * stats::Log10(probabilities[k]);
  }
  return sum;
}

}  // namespace recombination

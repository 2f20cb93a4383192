#include "tests/reference/clonal_plain.h"

#include <cmath>
#include <utility>

#include "recombination/map_functions.h"
#include "stats/generator.h"

namespace reference {
namespace {

using recombination::LogLikelihood;

struct Answer {
  float rec[3] = {0.5f, 0.5f, 0.5f};
  float lod[3] = {0, 0, 0};
};

// -1 drops the line.
int ClassOf(char letter) {
  switch (letter) {
    case 'A':
    case 'E':
    case 'G':
    case 'I':
      return 0;
    case 'B':
    case 'F':
    case 'J':
      return 1;
    case 'C':
    case 'H':
      return 2;
    case 'D':
    case 'K':
      return 3;
    default:
      return -1;
  }
}

float CountTable(const char* first, const char* second, int32_t lines, float* u) {
  for (int k = 0; k < 16; ++k) u[k] = 0;
  for (int32_t line = 0; line < lines; ++line) {
    const int a = ClassOf(first[line]), b = ClassOf(second[line]);
    if (a >= 0 && b >= 0) u[8 * (a / 2) + 4 * (b / 2) + 2 * (a % 2) + b % 2] += 1;
  }
  float n = 0;
  for (int k = 0; k < 16; ++k) n += u[k];
  return n;
}

float Fold(float r) { return 0.5f - std::fabs(0.5f - r); }
float Pooled(float p1, float p2) { return ((1.0f - std::fabs(0.5f - p1)) - std::fabs(0.5f - p2)) * 0.5f; }

void TwoClasses(float same, float changed, float& rec, float& lod) {
  rec = changed / (same + changed);
  const float counts[2] = {same, changed}, at[2] = {1.0f - rec, rec}, half[2] = {0.5f, 0.5f};
  lod = LogLikelihood(2, counts, at) - LogLikelihood(2, counts, half);
}

float Step(float a, float b, float d, float r) {
  const float s = 1.0f - r, q = s - r + 2.0f * r * r;
  const float score = a / r + b / -s + (4.0f * r - 2.0f) * d / q;
  const float slope = -a / (r * r) - b / (s * s) + 8.0f * r * d * s / (q * q);
  return r - score / slope;
}

// From the first step's clamped value on.
float Iterate(float a, float b, float d, float start, float r) {
  float change = std::fabs(r - start);
  for (int iteration = 1; change > 1e-6f; ++iteration) {
    const float next = Step(a, b, d, r);
    if (iteration > 100) return 0.5f;
    if (next < 0) return 0;
    if (next > 1) return 0.5f;
    change = std::fabs(next - r);
    r = next;
  }
  return r;
}

float PooledRun(float a, float b, float d, float start, float notANumber) {
  float r = Step(a, b, d, start);
  if (r <= 0) r = 0.0001f;
  r = Iterate(a, b, d, start, r);
  return std::isnan(r) ? notANumber : r;
}

// An ABCD marker with an intercross marker. The sixteen cells in classes of one frequency.
void WithIntercross(bool clonal, bool category5, const float* u, Answer& x) {
  const float z = u[0] + u[15], y = u[2] + u[13], v = u[1] + u[11], d = u[3] + u[9], w = u[5] + u[10],
              t = u[7] + u[8];
  TwoClasses(z + y, w + t, x.rec[0], x.lod[0]);
  if (category5) {
    TwoClasses(w + y, t + z, x.rec[1], x.lod[1]);
  } else {
    TwoClasses(t + z, w + y, x.rec[1], x.lod[1]);
  }
  const float p1 = x.rec[0], p2 = x.rec[1], s1 = 1.0f - p1, s2 = 1.0f - p2;
  const float f2 = category5 ? s2 : p2, g2 = category5 ? p2 : s2;
  const float counts[6] = {z, y, v, d, w, t};
  const float at[6] = {s1 * g2 / 4, s1 * f2 / 4, (p1 * g2 + s1 * f2) / 4, (p1 * f2 + s1 * g2) / 4,
                       p1 * f2 / 4, p1 * g2 / 4};
  const float null[6] = {1.0f / 16, 1.0f / 16, 1.0f / 8, 1.0f / 8, 1.0f / 16, 1.0f / 16};
  x.lod[2] = LogLikelihood(6, counts, at) - LogLikelihood(6, counts, null);
  const float start = Pooled(p1, p2);
  if (category5) {
    const float k = w + z + d;
    x.rec[2] = PooledRun(k + 2 * t, k + 2 * y, v, start, 0);
    return;
  }
  const float m = t + y + v, k = z + w + d;
  x.rec[2] = PooledRun(m + 2 * w, m + 2 * z, d, start, 0.5f);
  if (!clonal) return;
  if (p1 > 0.5f && p2 >= 0.5f) {
    x.rec[2] = PooledRun(m + 2 * z, m + 2 * w, d, start, 0.5f);
  } else if (p1 > 0.5f && p2 < 0.5f) {
    x.rec[2] = PooledRun(k + 2 * y, k + 2 * t, v, start, 0.5f);
  } else if (p1 <= 0.5f && p2 >= 0.5f) {
    x.rec[2] = PooledRun(k + 2 * t, k + 2 * y, v, start, 0.5f);
  }
}

struct Intercross {
  float z, w, v, d, n;
};
constexpr float kNull[4] = {1.0f / 16, 1.0f / 16, 1.0f / 8, 1.0f / 4};

Answer Coupling(const Intercross& c, float a, float b) {
  const float start = ((1.0f - std::sqrt(2.0f * c.z / c.n)) + (c.v / 2.0f + 2.0f * c.w) / c.n) / 2.0f;
  float r = Step(a, b, c.d, start);
  if (r <= 0) r = 0.0001f;
  if (r >= 1) r = 0.9999f;
  r = Iterate(a, b, c.d, start, r);
  if (std::isnan(r)) r = 0.5f;
  Answer x;
  const float f = Fold(r), s = 1.0f - f;
  const float counts[4] = {c.z, c.w, c.v, c.d},
              at[4] = {s * s / 4, f * f / 4, f * s / 2, (s * s + f * f) / 2};
  const float lod = LogLikelihood(4, counts, at) - LogLikelihood(4, counts, kNull);
  x.rec[0] = x.rec[1] = r;
  x.rec[2] = f;
  x.lod[0] = x.lod[1] = x.lod[2] = lod;
  return x;
}

Answer MixedPhases(const Intercross& c) {
  const float sum = c.z + c.w + c.d;
  const float r = sum <= c.n / 2 ? (1.0f - std::sqrt(1.0f - 2.0f * sum / c.n)) / 2.0f : 0.5f;
  Answer x;
  const float s = 1.0f - r;
  const float counts[4] = {c.z, c.w, c.v, c.d}, at[4] = {r * s / 4, r * s / 4, (r * r + s * s) / 4, r * s};
  const float lod = LogLikelihood(4, counts, at) - LogLikelihood(4, counts, kNull);
  x.rec[0] = x.rec[1] = x.rec[2] = r;
  x.lod[0] = x.lod[1] = x.lod[2] = lod;
  return x;
}

void BothIntercross(bool clonal, int32_t pair, const Intercross& c, Answer& x) {
  if (pair == 45) {
    x = MixedPhases(c);
    return;
  }
  const float a = c.v + 2 * c.w;
  x = Coupling(c, a, pair == 55 ? a : c.v + 2 * c.z);
  if (pair != 44 || !clonal) return;
  Answer mixed = MixedPhases(c);
  const float r = mixed.rec[2];
  const bool swapped = stats::UniformDraw() > 0.5f;
  mixed.rec[0] = swapped ? 1.0f - r : r;
  mixed.rec[1] = swapped ? r : 1.0f - r;
  if (mixed.rec[2] < x.rec[2]) x = mixed;
}

// The categories as two digits, the lower first.
void Estimate(bool clonal, int32_t pair, const float* u, float n, Answer& x) {
  switch (pair) {
    case 11:
      TwoClasses(u[0] + u[1] + u[2] + u[3] + u[12] + u[13] + u[14] + u[15],
                 u[4] + u[5] + u[6] + u[7] + u[8] + u[9] + u[10] + u[11], x.rec[0], x.lod[0]);
      TwoClasses(u[0] + u[3] + u[4] + u[7] + u[8] + u[11] + u[12] + u[15],
                 u[1] + u[2] + u[5] + u[6] + u[9] + u[10] + u[13] + u[14], x.rec[1], x.lod[1]);
      x.rec[2] = Pooled(x.rec[0], x.rec[1]);
      break;
    case 12:
    case 22:
      TwoClasses(u[0] + u[3] + u[4] + u[7] + u[8] + u[11] + u[12] + u[15],
                 u[1] + u[2] + u[5] + u[6] + u[9] + u[10] + u[13] + u[14], x.rec[1], x.lod[1]);
      x.rec[2] = Fold(x.rec[1]);
      break;
    case 13:
    case 33:
      TwoClasses(u[0] + u[1] + u[2] + u[3] + u[12] + u[13] + u[14] + u[15],
                 u[4] + u[5] + u[6] + u[7] + u[8] + u[9] + u[10] + u[11], x.rec[0], x.lod[0]);
      x.rec[2] = Fold(x.rec[0]);
      break;
    case 24:
      TwoClasses(u[0] + u[7], u[2] + u[5], x.rec[1], x.lod[1]);
      x.rec[2] = Fold(x.rec[1]);
      break;
    case 25:
      if (clonal) return;
      TwoClasses(u[2] + u[5], u[0] + u[7], x.rec[1], x.lod[1]);
      x.rec[2] = Fold(x.rec[1]);
      break;
    case 35:
      if (clonal) return;
      [[fallthrough]];
    case 34:
      TwoClasses(u[0] + u[13], u[5] + u[8], x.rec[0], x.lod[0]);
      x.rec[2] = Fold(x.rec[0]);
      break;
    case 14:
    case 15:
      return WithIntercross(clonal, pair == 15, u, x);
    case 45:
    case 55:
      if (clonal) return;
      [[fallthrough]];
    case 44:
      return BothIntercross(clonal, pair, {u[0] + u[15], u[5] + u[10], u[1] + u[2] + u[7] + u[11], u[3], n},
                            x);
    default:
      return;
  }
  x.lod[2] = x.lod[0] + x.lod[1];
}

}  // namespace

void ClonalPairsPlain(const recombination::Genotypes& data, const recombination::ClonalPairResults& results) {
  const int32_t lines = data.populationSize;
  int64_t p = 0;
  for (int32_t i = 2; i <= data.numMarkers; ++i) {
    for (int32_t j = 1; j < i; ++j, ++p) {
      int32_t first = i, second = j;
      if (data.category[j - 1] < data.category[i - 1]) std::swap(first, second);
      float u[16];
      const float n = CountTable(data.genotype + static_cast<int64_t>(first - 1) * lines,
                                 data.genotype + static_cast<int64_t>(second - 1) * lines, lines, u);
      Answer x;
      if (n >= 1) {
        const int32_t a = data.category[first - 1], b = data.category[second - 1];
        const bool known = a >= 1 && b >= 1 && a <= 5 && b <= 5;
        Estimate(data.population == 1, known ? 10 * a + b : 0, u, n, x);
        for (float& lod : x.lod) lod = lod < 0 ? 0 : lod;
        results.phase[p] = 1 + (x.rec[0] > 0.5f ? 2 : 0) + (x.rec[1] > 0.5f ? 1 : 0);
      }
      for (size_t k = 0; k < 3; ++k) {
        results.rec[k][p] = x.rec[k];
        results.lod[k][p] = x.lod[k];
        results.distance[k][p] = recombination::DistanceFromRec(data.mappingFunction, x.rec[k]);
      }
    }
  }
}

}  // namespace reference

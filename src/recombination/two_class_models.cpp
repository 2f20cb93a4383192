#include "recombination/two_class_models.h"

#include <array>
#include <cmath>

#include "recombination/map_functions.h"
#include "stats/roots.h"

namespace recombination {
namespace {

// r from the transformed variable q of the quadratic.
float RecFromQ(Curve curve, float q) {
  switch (curve) {
    case Curve::S2:
      return 1.0f - std::sqrt(q);
    case Curve::S3:
      return 1.0f - stats::CBRT(q);
    case Curve::Bc1Ril:
      return (1.0f - q) / (1.0f + 2.0f * q);
    default:
      return (q + 1.0f) - std::sqrt((q + 3.0f) * q);  // Bc2Ril
  }
}

// The distinct cells of the model: frequency and derivatives in r beside the count. With share 1/2 the two
// pure cells have one frequency, and their counts are added up first.
struct Term {
  float count, p, slope, curvature;
};
struct Terms {
  std::array<Term, 3> term;
  size_t count;
};
Terms TermsAt(const PopulationRow& row, const float* table, float r) {
  const TwoClassCounts t = TwoClassCountsOf(row, table);
  const CurveValues c = CurveAt(row.curve, r);
  const float slope = row.share * c.slope, curvature = row.share * c.curvature;
  const Term mixed = {t.mixed, row.share * c.complement, -slope, -curvature};
  if (row.share == 0.5f) return {{{{t.both + t.other, row.share * c.g, slope, curvature}, mixed}}, 2};
  const float fixed = 1.0f - 2.0f * row.share;
  return {{{{t.both, fixed + row.share * c.g, slope, curvature},
            mixed,
            {t.other, row.share * c.g, slope, curvature}}},
          3};
}

float Likelihood(const Terms& terms) {
  std::array<float, 3> counts{}, p{};
  for (size_t k = 0; k < terms.count; ++k) {
    counts[k] = terms.term[k].count;
    p[k] = terms.term[k].p;
  }
  return LogLikelihood(static_cast<int32_t>(terms.count), counts.data(), p.data());
}

// Required as it stands: cells 4 and 8 are exchanged in the second derivative of P2BC2F1.
float P2Bc2F1Second(const float* table, float r) {
  const float s = 1.0f - r, y = s * s, mixed = table[5] + table[7];
  return 4.0f * y *
             (-table[4] / ((y + 2.0f) * (y + 2.0f)) - mixed / ((y - 1.0f) * (y - 1.0f)) -
              table[8] / (y * y)) +
         2.0f * (table[4] / (y + 2.0f) + mixed / (y - 1.0f) + table[8] / y);
}

// Required as it stands: the chain factors are those of 2r/(1 + 2r), not of the curve.
float Bc2RilSecond(const PopulationRow& row, const float* table, float r) {
  const TwoClassCounts t = TwoClassCountsOf(row, table);
  const float s = 1.0f - r, f = 1.0f + 2.0f * r, x = s * s / f, f2 = f * f;
  const float squares =
      -t.both / ((x + 6.0f) * (x + 6.0f)) - t.other / (x * x) - t.mixed / ((x - 1.0f) * (x - 1.0f));
  const float plain = t.both / (x + 6.0f) + t.mixed / (x - 1.0f) + t.other / x;
  return squares * 4.0f / (f2 * f2) - plain * 8.0f / (f2 * f);
}

}  // namespace

CurveValues CurveAt(Curve curve, float r) {
  const float s = 1.0f - r, f = 1.0f + 2.0f * r;
  switch (curve) {
    case Curve::S:
      return {s, r, -1, 0};
    case Curve::S2:
      return {s * s, r * (1.0f + s), -2.0f * s, 2};
    case Curve::S3:
      return {s * s * s, r * (1.0f + s + s * s), -3.0f * s * s, 6.0f * s};
    case Curve::Ril:
      return {1.0f / f, 2.0f * r / f, -2.0f / (f * f), 8.0f / (f * f * f)};
    case Curve::Bc1Ril:
      return {s / f, 3.0f * r / f, -3.0f / (f * f), 12.0f / (f * f * f)};
    case Curve::Bc2Ril:
      return {s * s / f, r * (4.0f - r) / f, -2.0f * s * (2.0f + r) / (f * f), 18.0f / (f * f * f)};
    case Curve::Selfing:
      break;
  }
  return {0, 0, 0, 0};
}

TwoClassCounts TwoClassCountsOf(const PopulationRow& row, const float* table) {
  const TwoClassPlaces at = PlacesOf(row);
  return {table[at.both], table[at.mixed1] + table[at.mixed2], table[at.other]};
}

float TwoClassRec(const PopulationRow& row, const float* table, float n) {
  const TwoClassCounts t = TwoClassCountsOf(row, table);
  if (row.share == 0.5f) {
    const float ratio = t.mixed / n;
    return row.curve == Curve::Ril ? 0.5f * ratio / (1.0f - ratio) : ratio;
  }
  const bool half = row.share == 0.25f;
  const float v = half ? 2.0f * t.mixed + t.other - t.both : 6.0f * t.mixed + 5.0f * t.other - t.both;
  const float c = half ? 8.0f : 24.0f;
  const float q = (-v + std::sqrt(v * v + c * n * t.other)) / (2.0f * n);
  return RecFromQ(row.curve, q);
}

void TwoClassCells(const PopulationRow& row, float r, float* cells) {
  const TwoClassPlaces at = PlacesOf(row);
  const CurveValues c = CurveAt(row.curve, r);
  cells[at.both] = 1.0f - 2.0f * row.share + row.share * c.g;
  cells[at.mixed1] = cells[at.mixed2] = row.share * c.complement;
  cells[at.other] = row.share * c.g;
}

float TwoClassFirst(const PopulationRow& row, const float* table, float r) {
  const Terms terms = TermsAt(row, table, r);
  float sum = 0;
  for (size_t k = 0; k < terms.count; ++k)
    sum += terms.term[k].count * (terms.term[k].slope / terms.term[k].p);
  return sum;
}

float TwoClassSecond(int32_t population, const float* table, float r) {
  const PopulationRow& row = Population(population);
  if (population == 10) return P2Bc2F1Second(table, r);
  if (row.curve == Curve::Bc2Ril) return Bc2RilSecond(row, table, r);
  const Terms terms = TermsAt(row, table, r);
  float sum = 0;
  for (size_t k = 0; k < terms.count; ++k) {
    const Term& term = terms.term[k];
    const float slope = term.slope / term.p;
    sum += term.count * (term.curvature / term.p - slope * slope);
  }
  return sum;
}

std::array<size_t, 9> TwoClassFlip(const PopulationRow& row) {
  if (row.step == 2) return {6, 7, 8, 3, 4, 5, 0, 1, 2};
  if (row.mirrored) return {0, 1, 2, 6, 7, 8, 3, 4, 5};
  return {3, 4, 5, 0, 1, 2, 6, 7, 8};
}

float TwoClassLod(const PopulationRow& row, const float* table, float r) {
  return Likelihood(TermsAt(row, table, r)) - Likelihood(TermsAt(row, table, 0.5f));
}

}  // namespace recombination

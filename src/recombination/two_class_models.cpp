#include "recombination/two_class_models.h"

#include <array>

#include "recombination/two_class_estimator.h"
#include "stats/real_math.h"

namespace recombination {
namespace {

struct Slopes {
  float slope, curvature;  // of g
};
Slopes SlopesAt(Curve curve, float r) {
  const float s = 1.0f - r, f = 1.0f + 2.0f * r;
  switch (curve) {
    case Curve::S2:
      return {-2.0f * s, 2};
    case Curve::S3:
      return {-3.0f * s * s, 6.0f * s};
    case Curve::Ril:
      return {-2.0f / (f * f), 8.0f / (f * f * f)};
    case Curve::Bc1Ril:
      return {-3.0f / (f * f), 12.0f / (f * f * f)};
    case Curve::Bc2Ril:
      return {-2.0f * s * (2.0f + r) / (f * f), 18.0f / (f * f * f)};
    default:
      return {-1, 0};
  }
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
  const TwoClassPlaces at = PlacesOf(row);
  const float both = table[at.both], other = table[at.other], mixed = table[at.mixed1] + table[at.mixed2];
  const float s = 1.0f - r, f = 1.0f + 2.0f * r, x = s * s / f, f2 = f * f;
  const float squares =
      -both / ((x + 6.0f) * (x + 6.0f)) - other / (x * x) - mixed / ((x - 1.0f) * (x - 1.0f));
  const float plain = both / (x + 6.0f) + mixed / (x - 1.0f) + other / x;
  return squares * 4.0f / (f2 * f2) - plain * 8.0f / (f2 * f);
}

struct Derivative {
  float first, second;
};
Derivative DerivativesAt(const PopulationRow& row, const float* table, float r) {
  const Terms<float> terms = TermsAt<float>(row, table, r);
  const Slopes g = SlopesAt(row.curve, r);
  Derivative sum = {0, 0};
  for (size_t k = 0; k < terms.size; ++k) {
    const float sign = k == 1 ? -row.share : row.share;  // the mixed cells fall as g rises
    const float slope = sign * g.slope / terms.p[k];
    sum.first += terms.count[k] * slope;
    sum.second += terms.count[k] * (sign * g.curvature / terms.p[k] - slope * slope);
  }
  return sum;
}

}  // namespace

void TwoClassCells(const PopulationRow& row, float r, float* cells) {
  const TwoClassPlaces at = PlacesOf(row);
  const Lineage<float> c = LineageAt<float>(row.curve, r);
  cells[at.both] = 1.0f - 2.0f * row.share + row.share * c.g;
  cells[at.mixed1] = cells[at.mixed2] = row.share * c.complement;
  cells[at.other] = row.share * c.g;
}

float TwoClassFirst(int32_t population, const float* table, float r) {
  return DerivativesAt(Population(population), table, r).first;
}

float TwoClassSecond(int32_t population, const float* table, float r) {
  const PopulationRow& row = Population(population);
  if (population == 10) return P2Bc2F1Second(table, r);
  if (row.curve == Curve::Bc2Ril) return Bc2RilSecond(row, table, r);
  return DerivativesAt(row, table, r).second;
}

const float* TwoClassHalfLogs(int32_t population) {
  static const auto logs = [] {
    std::array<std::array<float, 3>, kPopulations.size()> table{};
    const std::array<float, 9> none{};
    for (size_t k = 0; k < table.size(); ++k) {
      if (kPopulations[k].family != Family::Two) continue;
      const Terms<float> terms = TermsAt<float>(kPopulations[k], none.data(), 0.5f);
      for (size_t term = 0; term < terms.size; ++term) table[k][term] = stats::Log10(terms.p[term]);
    }
    return table;
  }();
  return logs[static_cast<size_t>(population) - 1].data();
}

}  // namespace recombination

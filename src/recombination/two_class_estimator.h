#pragma once

#include "recombination/lane_math.h"
#include "recombination/two_class_models.h"

// Estimators of the populations of two classes over lanes. A table has one cell where both markers are of the
// recurrent parent's class, two mixed cells, and one where both are of the other class; the frequencies are
// 1 - 2 share + share g, share (1 - g) twice, and share g.
namespace recombination {

// g(r) with its complement, not formed as a difference.
template <class R>
struct Lineage {
  R g, complement;
};
template <class R>
inline Lineage<R> LineageAt(Curve curve, const R& r) {
  const R s = 1.0f - r, f = 1.0f + 2.0f * r;
  switch (curve) {
    case Curve::S2:
      return {s * s, r * (1.0f + s)};
    case Curve::S3:
      return {s * s * s, r * (1.0f + s + s * s)};
    case Curve::Ril:
      return {1.0f / f, 2.0f * r / f};
    case Curve::Bc1Ril:
      return {s / f, 3.0f * r / f};
    case Curve::Bc2Ril:
      return {s * s / f, r * (4.0f - r) / f};
    default:
      return {s, r};
  }
}

// The distinct frequencies of the model and the counts that belong to them: with share 1/2 the two pure cells
// have one frequency, and their counts are added up first.
template <class R>
struct Terms {
  R count[3], p[3];
  size_t size;
};
template <class R>
inline Terms<R> TermsAt(const PopulationRow& row, const R* table, const R& r) {
  const TwoClassPlaces at = PlacesOf(row);
  const Lineage<R> c = LineageAt<R>(row.curve, r);
  const R mixed = table[at.mixed1] + table[at.mixed2];
  if (row.share == 0.5f) {
    return {
        {table[at.both] + table[at.other], mixed, R{}}, {row.share * c.g, row.share * c.complement, R{}}, 2};
  }
  return {{table[at.both], mixed, table[at.other]},
          {1.0f - 2.0f * row.share + row.share * c.g, row.share * c.complement, row.share * c.g},
          3};
}

// r from the transformed variable q of the quadratic.
template <class R>
inline R RecFromQ(Curve curve, const R& q) {
  switch (curve) {
    case Curve::S2:
      return 1.0f - Sqrt<R>(q);
    case Curve::S3:
      return 1.0f - Cbrt<R>(q);
    case Curve::Bc1Ril:
      return (1.0f - q) / (1.0f + 2.0f * q);
    default:
      return (q + 1.0f) - Sqrt<R>((q + 3.0f) * q);  // Bc2Ril
  }
}

// Coupling estimate, n the table's sum. Not clamped.
template <class R>
inline R TwoClassRec(const PopulationRow& row, const R* table, const R& n) {
  const TwoClassPlaces at = PlacesOf(row);
  const R& both = table[at.both];
  const R& other = table[at.other];
  const R mixed = table[at.mixed1] + table[at.mixed2];
  if (row.share == 0.5f) {
    const R ratio = mixed / n;
    return row.curve == Curve::Ril ? 0.5f * ratio / (1.0f - ratio) : ratio;
  }
  const bool half = row.share == 0.25f;
  const R v = half ? 2.0f * mixed + other - both : 6.0f * mixed + 5.0f * other - both;
  const R root = Sqrt<R>(v * v + (half ? 8.0f : 24.0f) * n * other);
  return RecFromQ<R>(row.curve, (root - v) / (2.0f * n));
}

template <class R>
inline R TwoClassLod(int32_t population, const R* table, const R& r) {
  const Terms<R> terms = TermsAt<R>(Population(population), table, r);
  const float* logs = TwoClassHalfLogs(population);
  R sum{}, atHalf{};
  for (size_t k = 0; k < terms.size; ++k) {
    sum = sum + Select<R>(terms.p[k] > 0.0f, terms.count[k] * LogOf<R, true>(terms.p[k]), R{});
    atHalf = atHalf + terms.count[k] * logs[k];
  }
  return sum - atHalf;
}

// One phase by itself.
template <class R>
inline void TwoClassOnePhase(int32_t population, bool repulsion, const R* table, const R& n, R& rec, R& lod) {
  const PopulationRow& row = Population(population);
  const auto from = TwoClassFlip(row);
  R own[9];
  for (size_t k = 0; k < 9; ++k) own[k] = table[repulsion ? from[k] : k];
  rec = TwoClassRec<R>(row, own, n);
  lod = TwoClassLod<R>(population, own, rec);
}

// The better phase of lanes with observations, without its standard error.
template <class R>
inline void TwoClassBothPhases(int32_t population, const R* table, const R& n, R& rec, R& lod) {
  const PopulationRow& row = Population(population);
  const auto from = TwoClassFlip(row);
  R flipped[9];
  for (size_t k = 0; k < 9; ++k) flipped[k] = table[from[k]];
  const R coupling = TwoClassRec<R>(row, table, n), repulsion = TwoClassRec<R>(row, flipped, n);
  const Mask<R> flip = coupling > repulsion;
  rec = Select<R>(flip, 1.0f - repulsion, coupling);
  for (size_t k = 0; k < 9; ++k) flipped[k] = Select<R>(flip, flipped[k], table[k]);
  lod = TwoClassLod<R>(population, flipped, Select<R>(flip, repulsion, coupling));
}

}  // namespace recombination

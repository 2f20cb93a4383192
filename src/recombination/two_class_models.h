#pragma once

#include <array>
#include <cstdint>

#include "recombination/population_table.h"

// The fourteen populations of two genotype classes. A table has one cell where both markers are of the
// recurrent parent's class, two mixed cells, and one where both are of the other class; the frequencies are
// 1 - 2 share + share g, share (1 - g) twice, and share g.
namespace recombination {

// g(r) with its complement, not formed as a difference, and its derivatives.
struct CurveValues {
  float g, complement, slope, curvature;
};
CurveValues CurveAt(Curve curve, float r);

// Counts that matter: recurrent, mixed, other.
struct TwoClassCounts {
  float both, mixed, other;
};
TwoClassCounts TwoClassCountsOf(const PopulationRow& row, const float* table);

// Coupling estimate, n the table's sum. Not clamped.
float TwoClassRec(const PopulationRow& row, const float* table, float n);

// The nine cells at r.
void TwoClassCells(const PopulationRow& row, float r, float* cells);

// First and second derivative of the natural-log likelihood.
float TwoClassFirst(const PopulationRow& row, const float* table, float r);
float TwoClassSecond(int32_t population, const float* table, float r);

// Where the cells come from when the first marker's two classes are exchanged.
std::array<size_t, 9> TwoClassFlip(const PopulationRow& row);

float TwoClassLod(const PopulationRow& row, const float* table, float r);

}  // namespace recombination

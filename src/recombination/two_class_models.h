#pragma once

#include <array>
#include <cstdint>

#include "recombination/population_table.h"

// The fourteen populations of two genotype classes, one table at a time.
namespace recombination {

// Where the cells come from when the first marker's two classes are exchanged.
constexpr std::array<size_t, 9> TwoClassFlip(const PopulationRow& row) {
  if (row.step == 2) return {6, 7, 8, 3, 4, 5, 0, 1, 2};
  if (row.mirrored) return {0, 1, 2, 6, 7, 8, 3, 4, 5};
  return {3, 4, 5, 0, 1, 2, 6, 7, 8};
}

// The nine cells at r.
void TwoClassCells(const PopulationRow& row, float r, float* cells);

// First and second derivative of the natural-log likelihood.
float TwoClassFirst(int32_t population, const float* table, float r);
float TwoClassSecond(int32_t population, const float* table, float r);

// Common logarithms of the model's distinct frequencies at 0.5.
const float* TwoClassHalfLogs(int32_t population);

}  // namespace recombination

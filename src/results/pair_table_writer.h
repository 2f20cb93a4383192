#pragma once

// A pair table of a result file: the lower triangle of the values of selected markers, a row a marker.

#include <cstdint>
#include <string_view>
#include <vector>

#include "results/pair_arrays.h"

namespace results {

// The three families of tables, in the order in which they are written. A family has up to three files:
// extension and unit of the second and third follow from the first.
struct TableFamily {
  std::string_view extension;
  int32_t unit;
};
inline constexpr TableFamily kTableFamilies[3] = {{".rec", 40001}, {".lod", 40004}, {".dis", 40007}};
inline constexpr int32_t kWriteTable = 1;  // the value of a switch that asks for a family

// The markers of a table in its order, by running number.
struct TableSelection {
  std::vector<int32_t> markers;
  std::vector<std::string_view> names;  // 35 characters
};

// Rows and columns bear the place in the selection. A pair without a place in the array shows as NaN.
void WritePairTable(int32_t unit, const TableSelection& selection, const PairArray<float>& values);

}  // namespace results

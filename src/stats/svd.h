#pragma once

#include <cstdint>
#include <vector>

namespace stats {

// Columns of reals, the first index running fastest.
struct Matrix {
  int32_t rows = 0;
  int32_t columns = 0;
  std::vector<float> values;
};
inline Matrix MakeMatrix(int32_t rows, int32_t columns) {
  return {rows, columns,
          std::vector<float>(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns), 0.0F)};
}
inline std::size_t PlaceOf(const Matrix& matrix, int32_t row, int32_t column) {
  return static_cast<std::size_t>(row) - 1 +
         (static_cast<std::size_t>(column) - 1) * static_cast<std::size_t>(matrix.rows);
}
inline float& At(Matrix& matrix, int32_t row, int32_t column) {
  return matrix.values[PlaceOf(matrix, row, column)];
}
inline float At(const Matrix& matrix, int32_t row, int32_t column) {
  return matrix.values[PlaceOf(matrix, row, column)];
}

// Singular value decomposition a = u diag(s) v', of a matrix of at least one row and column.
//   s  out  min(rows, columns) values, descending, not negative
//   u  out  the first uColumns columns of the orthogonal matrix of order a.rows
//   v  out  the first vColumns columns of the one of order a.columns
// The sign of a pair of vectors is whatever the method gives. An element that is not finite makes every
// result not a number.
struct Decomposition {
  std::vector<float> s;
  Matrix u, v;
};
Decomposition SVD(const Matrix& a, int32_t uColumns, int32_t vColumns);

}  // namespace stats

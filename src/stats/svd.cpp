#include "stats/svd.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace stats {
namespace {

constexpr double kOrthogonal = 1e-15;  // cosine of two columns that count as orthogonal
constexpr double kNothing = 1e-14;     // of the largest singular value: below it a direction is rounding
constexpr int kMaxSweeps = 60;         // ten are usual

// Columns in double; places count from 0.
struct Columns {
  std::size_t rows, count;
  std::vector<double> values;
  Columns(std::size_t rowsOfIt, std::size_t columns)
      : rows(rowsOfIt), count(columns), values(rowsOfIt * columns, 0.0) {}
  double* Column(std::size_t j) { return values.data() + j * rows; }
  const double* Column(std::size_t j) const { return values.data() + j * rows; }
};

double Dot(const double* x, const double* y, std::size_t n) { return std::inner_product(x, x + n, y, 0.0); }
void AddMultiple(double* x, double factor, const double* y, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    x[i] += factor * y[i];
  }
}

// Applies the reflection I - 2 h h' to a column; h is of length 1, or all zero.
void Reflect(const double* h, double* column, std::size_t n) {
  AddMultiple(column, -2 * Dot(h, column, n), h, n);
}

// a = Q R, rows at least columns: R comes back, the columns of `a` become the vectors of Q's reflections.
Columns TriangleOf(Columns& a) {
  Columns r(a.count, a.count);
  for (std::size_t j = 0; j < a.count; ++j) {
    double* column = a.Column(j);
    std::copy_n(column, j, r.Column(j));
    std::fill_n(column, j, 0.0);
    const double length = std::sqrt(Dot(column + j, column + j, a.rows - j));
    r.Column(j)[j] = column[j] > 0 ? -length : length;
    column[j] -= r.Column(j)[j];
    const double own = std::sqrt(Dot(column + j, column + j, a.rows - j));
    for (std::size_t i = j; i < a.rows; ++i) {
      column[i] = own > 0 ? column[i] / own : 0;
    }
    for (std::size_t later = j + 1; later < a.count; ++later) {
      Reflect(column + j, a.Column(later) + j, a.rows - j);
    }
  }
  return r;
}

void Rotate(double* x, double* y, std::size_t n, double cosine, double sine) {
  for (std::size_t i = 0; i < n; ++i) {
    const double before = x[i];
    x[i] = cosine * before - sine * y[i];
    y[i] = sine * before + cosine * y[i];
  }
}

// Makes columns p and q orthogonal; false when they were.
bool RotatePair(Columns& w, Columns& v, std::size_t p, std::size_t q) {
  const double* const x = w.Column(p);
  const double* const y = w.Column(q);
  double pp = 0, qq = 0, pq = 0;  // three sums at once: each waits for itself only
  for (std::size_t i = 0; i < w.rows; ++i) {
    pp += x[i] * x[i];
    qq += y[i] * y[i];
    pq += x[i] * y[i];
  }
  if (!(std::fabs(pq) > kOrthogonal * std::sqrt(pp) * std::sqrt(qq))) {
    return false;
  }
  const double zeta = (qq - pp) / (2 * pq);
  const double tangent = std::copysign(1.0, zeta) / (std::fabs(zeta) + std::sqrt(1 + zeta * zeta));
  const double cosine = 1 / std::sqrt(1 + tangent * tangent);
  Rotate(w.Column(p), w.Column(q), w.rows, cosine, cosine * tangent);
  Rotate(v.Column(p), v.Column(q), v.rows, cosine, cosine * tangent);
  return true;
}

// One-sided Jacobi on a square table: its columns become orthogonal, u diag(s); v gathers the rotations.
void Orthogonalise(Columns& w, Columns& v) {
  for (std::size_t j = 0; j < v.count; ++j) {
    v.Column(j)[j] = 1;
  }
  bool turned = true;
  for (int sweep = 0; turned && sweep < kMaxSweeps; ++sweep) {
    turned = false;
    for (std::size_t p = 0; p + 1 < w.count; ++p) {
      for (std::size_t q = p + 1; q < w.count; ++q) {
        turned = RotatePair(w, v, p, q) || turned;
      }
    }
  }
}

// A direction that is orthogonal to the first `count` columns: of the unit vectors, one that keeps its
// length.
void Complete(Columns& u, std::size_t count) {
  double* column = u.Column(count);
  double length = 0;
  for (std::size_t unit = 0; unit < u.rows && length * length * static_cast<double>(2 * u.rows) < 1; ++unit) {
    std::fill_n(column, u.rows, 0.0);
    column[unit] = 1;
    for (int pass = 0; pass < 2; ++pass) {  // the second takes away what rounding left
      for (std::size_t j = 0; j < count; ++j) {
        AddMultiple(column, -Dot(u.Column(j), column, u.rows), u.Column(j), u.rows);
      }
    }
    length = std::sqrt(Dot(column, column, u.rows));
  }
  for (std::size_t i = 0; i < u.rows; ++i) {
    column[i] /= length;
  }
}

// Scales the orthogonal columns to length 1, largest first; `order` tells where each came from.
std::vector<double> TakeLengths(Columns& w, std::vector<std::size_t>& order) {
  std::vector<double> lengths(w.count);
  for (std::size_t j = 0; j < w.count; ++j) {
    lengths[j] = std::sqrt(Dot(w.Column(j), w.Column(j), w.rows));
  }
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t one, std::size_t other) { return lengths[one] > lengths[other]; });
  const Columns unordered = w;
  std::vector<double> sorted;
  for (std::size_t j = 0; j < w.count; ++j) {
    const double length = lengths[order[j]];
    sorted.push_back(length);
    if (length > kNothing * sorted[0]) {
      std::transform(unordered.Column(order[j]), unordered.Column(order[j]) + w.rows, w.Column(j),
                     [length](double value) { return value / length; });
    } else {
      Complete(w, j);
    }
  }
  return sorted;
}

void Round(const double* column, Matrix& matrix, int32_t j) {
  std::transform(column, column + matrix.rows, &At(matrix, 1, j),
                 [](double value) { return static_cast<float>(value); });
}

// The decomposition of a table with at least as many rows as columns; `taken` is overwritten.
Decomposition Tall(Columns& taken, int32_t uColumns, int32_t vColumns) {
  const std::size_t m = taken.rows, n = taken.count;
  Columns w = TriangleOf(taken);
  Columns v(n, n);
  Orthogonalise(w, v);
  std::vector<std::size_t> order(n);
  const std::vector<double> s = TakeLengths(w, order);
  Decomposition result{
      {}, MakeMatrix(static_cast<int32_t>(m), uColumns), MakeMatrix(static_cast<int32_t>(n), vColumns)};
  std::transform(s.begin(), s.end(), std::back_inserter(result.s),
                 [](double value) { return static_cast<float>(value); });
  for (int32_t j = 1; j <= vColumns; ++j) {
    Round(v.Column(order[static_cast<std::size_t>(j) - 1]), result.v, j);
  }
  std::vector<double> column(m);
  for (int32_t j = 1; j <= uColumns; ++j) {
    const auto place = static_cast<std::size_t>(j) - 1;
    std::fill(column.begin(), column.end(), 0.0);
    if (place < n) {
      std::copy_n(w.Column(place), n, column.begin());
    } else {
      column[place] = 1;
    }
    for (std::size_t k = n; k-- > 0;) {
      Reflect(taken.Column(k) + k, column.data() + k, m - k);
    }
    Round(column.data(), result.u, j);
  }
  return result;
}

Decomposition NotANumber(const Matrix& a, int32_t uColumns, int32_t vColumns) {
  Decomposition result{std::vector<float>(static_cast<std::size_t>(std::min(a.rows, a.columns))),
                       MakeMatrix(a.rows, uColumns), MakeMatrix(a.columns, vColumns)};
  for (std::vector<float>* values : {&result.s, &result.u.values, &result.v.values}) {
    std::fill(values->begin(), values->end(), std::numeric_limits<float>::quiet_NaN());
  }
  return result;
}

}  // namespace

Decomposition SVD(const Matrix& a, int32_t uColumns, int32_t vColumns) {
  if (!std::all_of(a.values.begin(), a.values.end(), [](float value) { return std::isfinite(value); })) {
    return NotANumber(a, uColumns, vColumns);
  }
  if (a.rows >= a.columns) {
    Columns taken(static_cast<std::size_t>(a.rows), static_cast<std::size_t>(a.columns));
    std::copy(a.values.begin(), a.values.end(), taken.values.begin());
    return Tall(taken, uColumns, vColumns);
  }
  Columns taken(static_cast<std::size_t>(a.columns), static_cast<std::size_t>(a.rows));
  for (int32_t row = 1; row <= a.rows; ++row) {
    for (int32_t column = 1; column <= a.columns; ++column) {
      taken.Column(static_cast<std::size_t>(row) - 1)[column - 1] = static_cast<double>(At(a, row, column));
    }
  }
  Decomposition turned = Tall(taken, vColumns, uColumns);
  std::swap(turned.u, turned.v);
  return turned;
}

}  // namespace stats

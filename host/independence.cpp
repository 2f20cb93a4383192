#include "host/independence.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace host {
namespace {

constexpr std::size_t kLetters = 8;

// The lines that have each letter, a bit a line; letters that no line has are left out.
struct Planes {
  std::vector<std::vector<uint64_t>> byLetter;
};

Planes PlanesOf(std::span<const uint8_t> row) {
  std::array<std::vector<uint64_t>, kLetters> planes;
  for (auto& plane : planes) plane.resize((row.size() + 63) / 64);
  std::array<bool, kLetters> seen{};
  for (std::size_t line = 0; line < row.size(); ++line) {
    if (row[line] >= kLetters) continue;  // missing
    planes[row[line]][line / 64] |= uint64_t{1} << line % 64;
    seen[row[line]] = true;
  }
  Planes present;
  for (std::size_t k = 0; k < kLetters; ++k) {
    if (seen[k]) present.byLetter.push_back(std::move(planes[k]));
  }
  return present;
}

std::size_t Common(const std::vector<uint64_t>& a, const std::vector<uint64_t>& b) {
  std::size_t count = 0;
  for (std::size_t w = 0; w < a.size(); ++w) count += static_cast<std::size_t>(std::popcount(a[w] & b[w]));
  return count;
}

std::size_t Filled(const std::array<std::size_t, kLetters>& sums) {
  return kLetters - static_cast<std::size_t>(std::count(sums.begin(), sums.end(), 0U));
}

// A chi-square value of several degrees of freedom as one of a single degree, by the cube root that makes it
// nearly normal.
double AsOneDegree(double chi, std::size_t degrees) {
  if (degrees <= 1) return chi;
  const double spread = 2.0 / (9.0 * static_cast<double>(degrees));
  const double z = (std::cbrt(chi / static_cast<double>(degrees)) - (1 - spread)) / std::sqrt(spread);
  return z > 0 ? z * z : 0;
}

// `logs`: n ln n for n up to the number of lines.
double IndependenceLod(const Planes& first, const Planes& second, const std::vector<double>& logs) {
  std::array<std::size_t, kLetters> rows{}, columns{};
  std::size_t total = 0;
  double half = 0;  // of the statistic
  for (std::size_t i = 0; i < first.byLetter.size(); ++i) {
    for (std::size_t j = 0; j < second.byLetter.size(); ++j) {
      const std::size_t count = Common(first.byLetter[i], second.byLetter[j]);
      rows[i] += count;
      columns[j] += count;
      total += count;
      half += logs[count];
    }
  }
  for (std::size_t sum : rows) half -= logs[sum];
  for (std::size_t sum : columns) half -= logs[sum];
  half += logs[total];
  const std::size_t r = Filled(rows), c = Filled(columns);
  if (r < 2 || c < 2) return 0;
  return std::max(0.0, AsOneDegree(2 * half, (r - 1) * (c - 1)) / (2 * std::log(10.0)));
}

}  // namespace

void AddLinkLods(const GenotypeTable& table, MapData& data) {
  std::vector<Planes> planes;
  planes.reserve(table.markers.size());
  for (std::size_t m = 0; m < table.markers.size(); ++m) planes.push_back(PlanesOf(table.Row(m)));
  std::vector<double> logs(table.lines + 1, 0);
  for (std::size_t n = 1; n < logs.size(); ++n) {
    logs[n] = static_cast<double>(n) * std::log(static_cast<double>(n));
  }
  data.linkLod = SharedArray<float>(data.lod.size());
  std::size_t pair = 0;
  for (std::size_t i = 1; i < planes.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j, ++pair) {
      // Only the smaller one matters.
      const float lod = data.lod[pair];
      data.linkLod[pair] =
          lod > 0 ? std::min(lod, static_cast<float>(IndependenceLod(planes[i], planes[j], logs))) : 0;
    }
  }
}

}  // namespace host

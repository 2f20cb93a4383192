#include "tests/reference/distance_tables.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>

namespace reference {
namespace {

using Random = std::mt19937;

// Draws that do not depend on the standard library at hand.
std::uint32_t Below(Random& random, std::uint32_t n) { return static_cast<std::uint32_t>(random()) % n; }
float Unit(Random& random) { return static_cast<float>(random() >> 8U) * 0x1p-24F; }

// Distance of an estimated frequency; above a half it is folded, as in the library.
float Kosambi(float r) {
  const float f = 0.5F - std::abs(0.5F - r);
  return f >= 0.5F ? 1000.0F : 25.0F * std::log((1 + f + f) / (1 - f - f));
}

// Gametes of an F1 over markers 1 to 2 cM apart, without interference: gamete[line][marker] is the parent.
std::vector<std::vector<int>> Gametes(std::int32_t n, int lines, const std::vector<float>& rec,
                                      Random& random) {
  std::vector<std::vector<int>> gametes;
  for (int line = 0; line < lines; ++line) {
    std::vector<int> gamete(static_cast<std::size_t>(n));
    int parent = static_cast<int>(Below(random, 2));
    for (std::size_t marker = 0; marker < gamete.size(); ++marker) {
      if (Unit(random) < rec[marker]) parent = 1 - parent;
      gamete[marker] = parent;
    }
    gametes.push_back(std::move(gamete));
  }
  return gametes;
}

// Estimated frequency of an F2 pair from the crossovers that can be counted and the lines heterozygous at
// both markers, which have none or two, by the EM algorithm.
float F2Frequency(int counted, int doubleHeterozygous, int lines) {
  float r = 0.25F;
  for (int round = 0; round < 30; ++round) {
    const float two = r * r / (r * r + (1 - r) * (1 - r));
    r = (static_cast<float>(counted) + 2 * two * static_cast<float>(doubleHeterozygous)) /
        (2 * static_cast<float>(lines));
  }
  return r;
}

// Two-point distances of a simulated cross of 200 lines, the markers in random order. Equal ones abound.
std::vector<float> Cross(std::int32_t n, bool f2, bool dense, Random& random) {
  constexpr int kLines = 200;
  const float spacing = dense ? 1.0F / static_cast<float>(n) : 0.01F;
  std::vector<float> rec(static_cast<std::size_t>(n));
  for (float& r : rec) r = std::min(spacing * (1 + Unit(random)), 0.4F);
  const auto first = Gametes(n, kLines, rec, random);
  const auto second = f2 ? Gametes(n, kLines, rec, random) : first;
  std::vector<std::size_t> marker(static_cast<std::size_t>(n));
  std::iota(marker.begin(), marker.end(), std::size_t{0});
  for (std::size_t i = marker.size(); i > 1; --i) {
    std::swap(marker[i - 1], marker[Below(random, static_cast<std::uint32_t>(i))]);
  }
  std::vector<float> table;
  for (std::size_t i = 1; i < marker.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      int apart = 0, heterozygous = 0;
      for (std::size_t line = 0; line < kLines; ++line) {
        const int a = first[line][marker[i]] + second[line][marker[i]];
        const int b = first[line][marker[j]] + second[line][marker[j]];
        apart += std::abs(a - b);
        heterozygous += a == 1 && b == 1 ? 1 : 0;
      }
      table.push_back(Kosambi(f2 ? F2Frequency(apart, heterozygous, kLines)
                                 : static_cast<float>(apart) / (2.0F * kLines)));
    }
  }
  return table;
}

float Entry(TableKind kind, Random& random) {
  switch (kind) {
    case TableKind::Integers:
      return static_cast<float>(Below(random, 4));
    case TableKind::Zeros:
      return Below(random, 3) == 0 ? 0.0F : Unit(random);
    case TableKind::Sentinels:
      return Below(random, 3) == 0 ? 1000.0F : static_cast<float>(Below(random, 40)) * 0.5F;
    case TableKind::Tenths:
      return 0.1F * static_cast<float>(Below(random, 12));
    case TableKind::Mixed:
      return std::exp(12 * Unit(random) - 6);
    case TableKind::Huge:
      return std::ldexp(1 + static_cast<float>(Below(random, 8)) / 8, static_cast<int>(Below(random, 126)));
    case TableKind::Undefined:
      switch (Below(random, 24)) {
        case 0:
          return std::numeric_limits<float>::quiet_NaN();
        case 1:
          return std::numeric_limits<float>::infinity();
        case 2:
          return -Unit(random);
        default:
          return 10 * Unit(random);
      }
    default:
      return 100 * Unit(random);
  }
}

}  // namespace

std::vector<float> MakeTable(TableKind kind, std::int32_t n, Random& random) {
  const bool dense = kind == TableKind::DenseDoubledHaploid || kind == TableKind::DenseF2;
  const bool f2 = kind == TableKind::F2 || kind == TableKind::DenseF2;
  if (dense || f2 || kind == TableKind::DoubledHaploid) return Cross(n, f2, dense, random);
  std::vector<float> table(static_cast<std::size_t>(n) * static_cast<std::size_t>(n - 1) / 2);
  for (float& entry : table) entry = Entry(kind, random);
  return table;
}

}  // namespace reference

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "recombination/layouts.h"
#include "recombination/pair_tables.h"
#include "recombination/population_table.h"
#include "stats/distributions.h"

namespace recombination {
namespace {

float Term(float observed, float expected) {
  const float difference = observed - expected;
  return difference * difference / expected;
}

// The two classes that the population shows; no other count enters.
float TwoClassChi(const PopulationRow& row, const std::array<float, 3>& count) {
  std::array<size_t, 2> classes{};
  size_t found = 0;
  for (size_t k = 0; k < 3; ++k) {
    if (row.ratio[k] > 0) classes[found++] = k;
  }
  const auto [x, y] = classes;
  const float total = count[x] + count[y];
  return Term(count[x], row.ratio[x] * total) + Term(count[y], row.ratio[y] * total);
}

void SelfingChi(const PopulationRow& row, int32_t category, const std::array<float, 3>& count, float& chi) {
  const auto [a, h, b] = count;
  const float total = a + h + b;
  const float eA = row.ratio[0] * total, eH = row.ratio[1] * total, eB = row.ratio[2] * total;
  if (category == 1) {
    chi = Term(a, eA) + Term(h, eH) + Term(b, eB);
  } else if (category == 12) {
    chi = Term(a + h, eH + eA) + Term(b, eB);
  } else if (category == 10) {
    chi = Term(a, eA) + Term(h + b, eH + eB);
  }
}

// The class that a letter is counted in, by population: 0 A, 1 H, 2 B, 3 X, 4 none.
size_t CountedAs(int32_t population, char letter) {
  const bool heteroA = population == 1 || population == 9, heteroB = population == 2 || population == 10;
  switch (letter) {
    case 'A':
      return 0;
    case 'D':
      return heteroB ? 1 : 0;
    case 'H':
      return 1;
    case 'R':
      return heteroA ? 1 : 2;
    case 'B':
      return 2;
    case 'X':
      return 3;
    default:
      return 4;
  }
}

}  // namespace

void SegregationTest(int32_t population, int32_t category, int32_t countA, int32_t countH, int32_t countB,
                     float& chi, float& p) {
  const std::array<float, 3> count = {static_cast<float>(countA), static_cast<float>(countH),
                                      static_cast<float>(countB)};
  const bool selfing = SelfingPopulation(population);
  if (selfing) {
    SelfingChi(Population(population), category, count, chi);
  } else if (KnownPopulation(population)) {
    chi = TwoClassChi(Population(population), count);
  }
  if (std::isnan(chi)) {
    p = 0;
  } else {
    p = 1.0f - stats::CHIDF(chi, selfing && category == 1 ? 2.0f : 1.0f);
  }
}

void ComputeMarkerResults(const Genotypes& data, const MarkerResults& results) {
  std::array<uint8_t, 256> classOf{};
  for (size_t k = 0; k < classOf.size(); ++k) {
    classOf[k] = static_cast<uint8_t>(CountedAs(data.population, static_cast<char>(k)));
  }
  const auto lines = static_cast<size_t>(std::max(data.populationSize, 0));
  for (int32_t m = 0; m < data.numMarkers; ++m) {
    const char* letters = data.genotype + static_cast<size_t>(m) * lines;
    std::array<int32_t, 5> count{};
    for (size_t line = 0; line < lines; ++line) ++count[classOf[static_cast<unsigned char>(letters[line])]];
    results.countA[m] = count[0];
    results.countH[m] = count[1];
    results.countB[m] = count[2];
    results.countX[m] = count[3];
    SegregationTest(data.population, data.category[m], count[0], count[1], count[2], results.chi[m],
                    results.p[m]);
  }
}

}  // namespace recombination

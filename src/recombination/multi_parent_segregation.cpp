#include <algorithm>
#include <cmath>
#include <string_view>

#include "recombination/multi_parent_tables.h"
#include "stats/distributions.h"

namespace recombination {
namespace {

void TestPattern(int32_t parents, int32_t pattern, const std::array<int32_t, kParentLetters>& count,
                 float& chi, float& p) {
  int32_t total = 0, classes = 0;
  for (size_t k = 0; k < static_cast<size_t>(parents); ++k) total += count[k];
  float sum = 0;
  for (int32_t allele = 1; allele <= parents; ++allele) {
    int32_t carriers = 0;
    for (int32_t k = 0; k < parents; ++k) carriers += AlleleAt(pattern, parents, k) == allele ? 1 : 0;
    if (carriers == 0) continue;
    ++classes;
    // whole individuals: required as it stands
    const int64_t whole = int64_t{total} * carriers / parents;
    const auto expected = static_cast<float>(whole);
    const float difference = static_cast<float>(count[static_cast<size_t>(allele) - 1]) - expected;
    sum += difference * difference / expected;
  }
  chi = sum;
  if (std::isnan(sum)) {
    p = sum;
  } else {
    p = classes < 2 ? 1.0f : 1.0f - stats::CHIDF(sum, static_cast<float>(classes - 1));
  }
}

}  // namespace

void ComputeMultiParentMarkers(const Genotypes& data, const MultiParentMarkerResults& results) {
  constexpr std::string_view kLetters = "ABCDEFGHX";
  const int32_t parents = data.population <= 2 ? 4 : 8;
  const auto lines = static_cast<size_t>(std::max(data.populationSize, 0));
  for (int32_t m = 0; m < data.numMarkers; ++m) {
    const std::string_view letters(data.genotype + static_cast<size_t>(m) * lines, lines);
    std::array<int32_t, 256> seen{};
    for (const char letter : letters) ++seen[static_cast<unsigned char>(letter)];
    std::array<int32_t, kParentLetters> count{};
    for (size_t k = 0; k < kParentLetters; ++k) {
      // a letter beyond the parents passes the load of a row, but is nobody's
      const bool known = k < static_cast<size_t>(parents) || kLetters[k] == 'X';
      count[k] = known ? seen[static_cast<unsigned char>(kLetters[k])] : 0;
      results.count[k][m] = count[k];
    }
    TestPattern(parents, data.category[m], count, results.chi[m], results.p[m]);
  }
}

}  // namespace recombination

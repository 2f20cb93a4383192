#include <algorithm>
#include <cmath>
#include <string_view>

#include "recombination/clonal_tables.h"
#include "stats/distributions.h"

namespace recombination {
namespace {

// The letters that a category shows, as places in "ABCDEFGHIJK", and their shares.
struct Ratio {
  size_t first, classes;
  std::array<float, 4> share;
};
constexpr std::array<Ratio, 5> kRatios = {{
    {0, 4, {0.25f, 0.25f, 0.25f, 0.25f}},
    {4, 2, {0.5f, 0.5f}},
    {6, 2, {0.5f, 0.5f}},
    {8, 3, {0.25f, 0.5f, 0.25f}},
    {8, 3, {0.25f, 0.5f, 0.25f}},
}};

void TestRatio(const Ratio& ratio, const std::array<int32_t, kClonalLetters>& count, float& chi, float& p) {
  int32_t total = 0;
  for (size_t k = 0; k < ratio.classes; ++k) total += count[ratio.first + k];
  const auto n = static_cast<float>(total);
  float sum = 0;
  for (size_t k = 0; k < ratio.classes; ++k) {
    const float expected = n * ratio.share[k];
    const float difference = static_cast<float>(count[ratio.first + k]) - expected;
    sum += difference * difference / expected;
  }
  chi = sum;
  p = std::isnan(sum) ? sum : 1.0f - stats::CHIDF(sum, static_cast<float>(ratio.classes - 1));
}

}  // namespace

void ComputeClonalMarkers(const Genotypes& data, const ClonalMarkerResults& results) {
  constexpr std::string_view kLetters = "ABCDEFGHIJKX";
  const auto lines = static_cast<size_t>(std::max(data.populationSize, 0));
  for (int32_t m = 0; m < data.numMarkers; ++m) {
    const std::string_view letters(data.genotype + static_cast<size_t>(m) * lines, lines);
    std::array<int32_t, 256> seen{};
    for (const char letter : letters) ++seen[static_cast<unsigned char>(letter)];
    std::array<int32_t, kClonalLetters> count{};
    for (size_t k = 0; k < kClonalLetters; ++k) {
      count[k] = seen[static_cast<unsigned char>(kLetters[k])];
      results.count[k][m] = count[k];
    }
    const int32_t category = data.category[m];
    if (category >= 1 && category <= 5) {
      TestRatio(kRatios[static_cast<size_t>(category) - 1], count, results.chi[m], results.p[m]);
    }
  }
}

}  // namespace recombination

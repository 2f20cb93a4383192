// Pair tables of four and eight parents, one process, one input: the library beside the plain loop over merged
// cells, whose answers it has to the bit (a difference aborts), and beside the loop over single cells, timed on
// the first fifth of the markers. multi_parent_bench [LEVEL]: 0 to 3 forces an instruction set.
#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "tests/reference/multi_parent_cells.h"
#include "tests/reference/multi_parent_plain.h"
#include "tests/reference/multi_parent_simulated.h"

namespace {

using Tables = std::array<std::vector<float>, 3>;

recombination::MultiParentPairResults Places(Tables& tables) {
  return {tables[0].data(), tables[1].data(), tables[2].data()};
}

// All bits, every not-a-number alike.
bool Same(const Tables& a, const Tables& b) {
  for (size_t k = 0; k < a.size(); ++k) {
    for (size_t p = 0; p < a[k].size(); ++p) {
      const float x = a[k][p], y = b[k][p];
      if (x != y && (x == x || y == y)) return false;
    }
  }
  return true;
}

double Since(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

struct Case {
  const char* name;
  int32_t population;
  double biallelic;
};
constexpr Case kCases[] = {{"4PDH", 1, 1},
                           {"4PRIL", 2, 1},
                           {"8PDH", 3, 1},
                           {"8PRIL", 4, 1},
                           {"4PDH more alleles", 1, 0.3},
                           {"4PRIL more alleles", 2, 0.3},
                           {"8PDH more alleles", 3, 0.3},
                           {"8PRIL more alleles", 4, 0.3}};

// Seconds a pair over single cells. unlike: pairs whose estimate is another one, which slow pairs near the limit
// of iterations can have.
double CellSeconds(recombination::Genotypes data, const Tables& fast, size_t& unlike) {
  data.numMarkers /= 5;
  const auto n = static_cast<size_t>(data.numMarkers), pairs = n * (n - 1) / 2;
  Tables cells;
  cells.fill(std::vector<float>(pairs));
  const auto start = std::chrono::steady_clock::now();
  reference::MultiParentPairsByCells(data, Places(cells));
  const double seconds = Since(start);
  unlike = 0;
  for (size_t p = 0; p < pairs; ++p) unlike += std::fabs(cells[0][p] - fast[0][p]) <= 1e-3f ? 0 : 1;
  return seconds / static_cast<double>(pairs);
}

void RunCase(const Case& one, recombination::Level level) {
  reference::ParentsPlan plan;
  plan.population = one.population;
  plan.markers = 1000;
  plan.missing = 0.05;
  plan.biallelic = one.biallelic;
  const reference::ParentsCross cross = reference::SimulateMultiParent(plan);
  const recombination::Genotypes data = {
      one.population, 1, plan.lines, plan.markers, cross.category.data(), cross.genotype.data()};
  const auto n = static_cast<size_t>(plan.markers), pairs = n * (n - 1) / 2;
  Tables plain, fast;
  plain.fill(std::vector<float>(pairs));
  fast = plain;
  auto start = std::chrono::steady_clock::now();
  reference::MultiParentPairsPlain(data, Places(plain));
  const double plainSeconds = Since(start);
  double fastSeconds = 1e30;
  for (int k = 0; k < 3; ++k) {
    start = std::chrono::steady_clock::now();
    recombination::ComputeMultiParentPairs(data, Places(fast), level);
    fastSeconds = std::min(fastSeconds, Since(start));
  }
  if (!Same(plain, fast)) {
    std::fprintf(stderr, "%s: the answers differ\n", one.name);
    std::abort();
  }
  size_t unlike;
  const double plainEach = plainSeconds / static_cast<double>(pairs) * 1e9,
               fastEach = fastSeconds / static_cast<double>(pairs) * 1e9,
               cellEach = CellSeconds(data, fast, unlike) * 1e9;
  std::printf(
      "%-18s %5d x %4d  cells %8.0f  merged %7.0f  library %5.0f ns/pair  ratio %6.1f  merged %6.1f\n",
      one.name, plan.markers, plan.lines, cellEach, plainEach, fastEach, cellEach / fastEach,
      plainEach / fastEach);
  if (unlike > 0) std::printf("  single cells: %zu pairs with another answer\n", unlike);
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  const recombination::Level level =
      argc > 1 ? static_cast<recombination::Level>(std::strtol(argv[1], nullptr, 10))
               : recombination::BestLevel();
  for (const Case& one : kCases) RunCase(one, level);
}
